/* libkvx: the video effects of kvx on images in memory, from C and from every language that can call C.
 *
 * Every function may be called from every thread; an effect is used by one thread at a time. Nothing is thrown. Functions
 * that return an int32_t return a negative KVX_... status when they fail, and kvx_last_error() then says in one line what
 * was wrong. Texts are UTF-8.
 *
 * The first field of every structure is its size: the caller sets it to sizeof, so that structures can grow.
 */
#ifndef KVX_KVX_H_
#define KVX_KVX_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define KVX_API __attribute__((visibility("default")))

enum {
  KVX_OK = 0,
  KVX_FAILED = -1,       /* a file, the plug-in or the machine did not do what it should */
  KVX_BAD_ARGUMENT = -2, /* what was asked for makes no sense: a null pointer, images of two sizes, ... */
  KVX_UNKNOWN_NAME = -3, /* no effect or parameter of this name, or several; the error names the nearest */
  KVX_BAD_VALUE = -4,    /* a value that is no number, or out of its parameter's range */
  KVX_NO_MEMORY = -5
};

/* The order of a pixel's bytes in memory. Three-byte pixels are opaque on the way in and lose alpha on the way out. */
enum { KVX_BGRA = 0, KVX_RGBA = 1, KVX_BGR = 2, KVX_RGB = 3 };

typedef struct kvx_library kvx_library;
typedef struct kvx_effect kvx_effect;

/* Null or empty texts mean: the environment's KVX_PLUGIN and KVX_RESOURCES, else what lies beside this library. */
typedef struct kvx_options {
  uint32_t size;
  const char* plugin;    /* path of kvxFilterPureCPlugin.so */
  const char* resources; /* the directory that holds kvx_effect */
} kvx_options;

enum {
  KVX_EFFECT_MOVING = 1,  /* moves on a still source */
  KVX_EFFECT_ORDERED = 2, /* remembers earlier frames: give it a clip's frames in order, on one kvx_effect */
  KVX_EFFECT_RANDOM = 4,  /* two runs of a program differ */
  KVX_EFFECT_MATERIAL = 8 /* draws with pictures of the resources */
};

/* Texts stay valid until the library is closed. */
typedef struct kvx_effect_info {
  uint32_t size;
  int32_t id;
  const char* name; /* two effects may share one */
  const char* slug; /* lower case, '-' between words; unique */
  const char* guid;
  const char* family;
  uint32_t flags;      /* KVX_EFFECT_... */
  int32_t param_count; /* without the opacity, which every effect has */
} kvx_effect_info;

enum {
  KVX_PARAM_TEXT = 1,   /* takes a text: the numbers below are 0 */
  KVX_PARAM_WHOLE = 2,  /* takes whole numbers only */
  KVX_PARAM_COLOUR = 4, /* a colour as one number */
  KVX_PARAM_HIDDEN = 8  /* not meant for a user interface */
};

typedef struct kvx_param_info {
  uint32_t size;
  uint32_t flags; /* KVX_PARAM_... */
  const char* name;
  const char* kind; /* "float", "integer", "check box", "colour", ... */
  double minimum;
  double maximum;
  double default_value;
} kvx_param_info;

/* Rows of pixels that the caller owns. `stride` is the number of bytes from one row to the next, at least width times the
 * bytes of a pixel; negative if the rows lie bottom up, `data` then being the first byte of the top row. Width and height
 * are 1 to 32768, together at most 2^28 pixels. */
typedef struct kvx_image {
  uint32_t size;
  uint8_t* data;
  int32_t width;
  int32_t height;
  int32_t stride;
  int32_t layout; /* KVX_BGRA, ... */
} kvx_image;

/* Where a frame stands in its clip. */
typedef struct kvx_frame {
  uint32_t size;
  int64_t frame;  /* from 0 */
  int64_t frames; /* of the whole clip, 0 if unknown */
  double seconds; /* since the clip's first frame */
} kvx_frame;

/* Loads the plug-in and reads its catalogue. `options` may be null. Opened again while it is open, it is shared; other
 * paths are then KVX_BAD_ARGUMENT. */
KVX_API int32_t kvx_open(const kvx_options* options, kvx_library** library);

/* Effects that were created stay usable; the last of them unloads the plug-in. Null is ignored. */
KVX_API void kvx_close(kvx_library* library);

/* The number of effects. */
KVX_API int32_t kvx_effect_count(const kvx_library* library);

/* Fills what `info->size` has room for. `index` is 0 to kvx_effect_count() - 1. */
KVX_API int32_t kvx_describe_effect(const kvx_library* library, int32_t index, kvx_effect_info* info);

/* The same for parameter `param`, 0 to param_count - 1, of an effect. */
KVX_API int32_t kvx_describe_param(const kvx_library* library, int32_t index, int32_t param, kvx_param_info* info);

/* The index of the effect with this name, slug, id or GUID; case does not matter. */
KVX_API int32_t kvx_find(const kvx_library* library, const char* effect);

/* An effect, found as kvx_find does, with all parameters at their defaults and an opacity of 100. */
KVX_API int32_t kvx_create(kvx_library* library, const char* effect, kvx_effect** created);

/* Null is ignored. */
KVX_API void kvx_destroy(kvx_effect* effect);

/* A parameter's value from the next frame on. Case does not matter; "opacity", in percent, is one of every effect. */
KVX_API int32_t kvx_set_number(kvx_effect* effect, const char* name, double value);

/* The same as a text: of a parameter that takes texts, a number, or values at frames as "0:20,50:90", linear between. */
KVX_API int32_t kvx_set_text(kvx_effect* effect, const char* name, const char* value);

/* Renders `input` into `output`: two sizes are KVX_BAD_ARGUMENT, two layouts are not. They may share memory; `input` is
 * not written otherwise. `frame` may be null for a still picture. Packed BGRA goes straight through; other layouts and
 * padded rows are copied once each way. Colours come out multiplied by the result's alpha. After a failure what stands in
 * `output` is undefined. */
KVX_API int32_t kvx_render(kvx_effect* effect, const kvx_image* input, const kvx_image* output, const kvx_frame* frame);

/* What the calling thread's last failure was; "" before the first. Valid until that thread's next failure. */
KVX_API const char* kvx_last_error(void);

#ifdef __cplusplus
}
#endif

#endif /* KVX_KVX_H_ */
