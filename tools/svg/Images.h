#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kernel/Counted.h>
#include <raster/DynamicBitmap.h>

#include "Element.h"
#include "Notices.h"

namespace Svg {

/// The bytes of a `data:` address, from Base64 or percent encoding; empty when it is damaged.
std::vector<unsigned char> DecodeDataAddress(std::string_view address);

/// The pictures that a drawing holds within itself.
class Images
{
public:
    explicit Images(Notices& notices) : m_notices(notices) {}

    /// The picture of an image element, decoded once; null for what cannot be read: other files,
    /// damaged data, kinds other than PNG and JPEG.
    Kernel::Counted<const Raster::DynamicBitmap> Find(const Element& image);

private:
    Kernel::Counted<const Raster::DynamicBitmap> Read(std::string_view address);

    Notices& m_notices;
    /// By the text of the address, which lives in the document.
    std::unordered_map<std::string_view, Kernel::Counted<const Raster::DynamicBitmap>> m_bitmaps;
};

} // namespace Svg
