#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kernel/Counted.h>
#include <raster/DynamicBitmap.h>

#include "Element.h"
#include "Neighbours.h"
#include "Notices.h"

namespace Svg {

/// The bytes of a `data:` address, from Base64 or percent encoding; empty when it is damaged.
std::vector<unsigned char> DecodeDataAddress(std::string_view address);

/// The pictures that a drawing shows: those within itself and those beside it.
class Images
{
public:
    /// \param folder of the drawing, where other files may lie; may be empty.
    Images(std::filesystem::path folder, Notices& notices)
        : m_neighbours(std::move(folder)), m_notices(notices)
    {}

    /// The picture of an image element, decoded once; null for what cannot be read: files
    /// elsewhere, damaged data, kinds other than PNG and JPEG.
    Kernel::Counted<const Raster::DynamicBitmap> Find(const Element& image);

private:
    Kernel::Counted<const Raster::DynamicBitmap> Read(std::string_view address);

    Neighbours m_neighbours;
    Notices& m_notices;
    /// By the text of the address, which lives in the document.
    std::unordered_map<std::string_view, Kernel::Counted<const Raster::DynamicBitmap>> m_bitmaps;
};

} // namespace Svg
