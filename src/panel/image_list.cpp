#include "tnv5/panel/image_list.h"

namespace tnv5::panel {

int TImageList::Add(const QImage& APicture)
{
    FPictures.append(APicture);
    return Count() - 1;
}

} // namespace tnv5::panel
