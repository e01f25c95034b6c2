// What must be known of EXIF to turn a picture upright and to hand the rest over untouched.
#ifndef KVX_HOSTS_KVX_EXIF_H_
#define KVX_HOSTS_KVX_EXIF_H_

#include <string>

namespace kvx {

// `exif` is the TIFF structure that JPEG's APP1 holds behind "Exif\0\0" and PNG's eXIf holds plainly. Damaged ones are
// taken for ones that say nothing.

// 1 to 8 as the standard counts them; 1 if it does not say.
int ExifOrientation(const std::string& exif);

// The same for a picture of this size that was turned upright and changed: orientation 1, the sizes, no thumbnail. In
// place, so that maker notes and whatever else is in it stay as they are.
void MakeExifUpright(std::string& exif, int width, int height);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_EXIF_H_
