#include <raster/DynamicBase.h>

namespace Raster {

DynamicBase::~DynamicBase() = default;

void DynamicBase::SyncHostCache() const {}

void DynamicBase::InvalidateHardwareCache(const Kernel::RectT<int>&) {}

} // namespace Raster
