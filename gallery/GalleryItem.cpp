#include "gallery/GalleryItem.h"

namespace gallery {

LUMBREL_IMPLEMENT_RUNTIME_CLASS(CTPGalleryItem, framework::Object)

}  // namespace gallery
