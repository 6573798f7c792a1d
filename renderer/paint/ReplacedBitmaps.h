#pragma once

#include <unordered_map>

#include <kernel/Counted.h>
#include <raster/DynamicBitmap.h>

namespace Renderer {

/// The bitmaps that a visitor has put in the place of others: fills that share a bitmap still do so
/// afterwards, and the work is done once.
class ReplacedBitmaps
{
public:
    using Bitmap = Kernel::Counted<const Raster::DynamicBitmap>;

    /// The replacement of a bitmap, made by \p make() when it is first asked for.
    template<class Function>
    Bitmap Get(const Bitmap& bitmap, Function&& make)
    {
        const auto [entry, isNew] = m_replacements.try_emplace(bitmap);
        if (isNew)
            entry->second = make();
        return entry->second;
    }

private:
    std::unordered_map<Bitmap, Bitmap> m_replacements;
};

} // namespace Renderer
