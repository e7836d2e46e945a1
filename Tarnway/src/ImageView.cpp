#include "tarnway/ImageView.h"

namespace tarnway {

ImageView::~ImageView() = default;

}  // namespace tarnway
