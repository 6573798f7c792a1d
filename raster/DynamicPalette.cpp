#include <raster/DynamicPalette.h>

namespace Raster {

void DynamicPalette::Reset(Format format)
{
    m_format = format;
    m_entries.clear();
}

bool DynamicPalette::Add(const DynamicPixel& entry)
{
    if (entry.GetFormat() != m_format)
        return false;
    m_entries.push_back(entry);
    return true;
}

void DynamicPalette::Remove(unsigned index)
{
    m_entries.erase(m_entries.begin() + index);
}

} // namespace Raster
