#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <raster/DynamicBitmap.h>

#include "Element.h"
#include "Neighbours.h"
#include "Notices.h"

namespace Svg {

class Drawing;

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

    /// What an image element shows: a bitmap, or a drawing of its own, which shows no files.
    struct Image
    {
        Kernel::Counted<const Raster::DynamicBitmap> bitmap;
        std::shared_ptr<Drawing> drawing;

        bool IsEmpty() const noexcept { return !bitmap && !drawing; }
        /// Its own extent: pixels of a bitmap, user units of a drawing.
        Kernel::RectT<double> GetRect() const;
    };

    /// The picture of an image element, read once; empty for what cannot be read: files elsewhere,
    /// damaged data, unknown kinds.
    const Image& Find(const Element& image);

private:
    Image Read(std::string_view address);

    Neighbours m_neighbours;
    Notices& m_notices;
    /// By the text of the address, which lives in the document.
    std::unordered_map<std::string_view, Image> m_images;
};

} // namespace Svg
