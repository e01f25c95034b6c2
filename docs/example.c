/* Usage: example IN.ppm OUT.ppm [EFFECT]. One effect on one picture, a binary PPM of 8 bits. */
#include <kvx/kvx.h>
#include <stdio.h>
#include <stdlib.h>

static int fail(const char* what) {
  fprintf(stderr, "%s: %s\n", what, kvx_last_error());
  return 1;
}

int main(int argc, char** argv) {
  int width, height;
  FILE* file = argc > 2 ? fopen(argv[1], "rb") : NULL;
  if (!file || fscanf(file, "P6 %d %d 255", &width, &height) != 2 || fgetc(file) == EOF || width < 1 || height < 1 ||
      width > 32768 || height > 32768) {
    fprintf(stderr, "usage: example IN.ppm OUT.ppm [EFFECT]\n");
    return 2;
  }
  size_t bytes = (size_t)width * (size_t)height * 3;
  uint8_t* pixels = malloc(bytes);
  if (!pixels || fread(pixels, 1, bytes, file) != bytes) return 1;
  fclose(file);

  kvx_library* library;
  kvx_effect* effect;
  if (kvx_open(NULL, &library) < 0) return fail("kvx_open");
  if (kvx_create(library, argc > 3 ? argv[3] : "Vignette1", &effect) < 0) return fail("kvx_create");
  if (kvx_set_number(effect, "opacity", 80) < 0) return fail("kvx_set_number");
  kvx_image image = {sizeof image, pixels, width, height, width * 3, KVX_RGB};
  if (kvx_render(effect, &image, &image, NULL) < 0) return fail("kvx_render");
  kvx_destroy(effect);
  kvx_close(library);

  file = fopen(argv[2], "wb");
  if (!file || fprintf(file, "P6\n%d %d\n255\n", width, height) < 0 || fwrite(pixels, 1, bytes, file) != bytes ||
      fclose(file) != 0) {
    perror(argv[2]);
    return 1;
  }
  free(pixels);
  return 0;
}
