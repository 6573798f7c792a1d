#include <geometry/Curve.h>

#include <algorithm>

#include <kernel/FutureVersionException.h>
#include <kernel/SavedItems.h>

namespace Geometry {

void CurveDbl::Save(Kernel::OutSerialiser& out) const
{
    Kernel::SavedItems::Writer items(out);
    items.Pairs("Pnts", m_points);
    out.SaveRawStructI("Segm", m_segments.data(), m_segments.size());
    items.Optional("Clos", m_closed, false);
}

bool CurveDbl::Load(const Kernel::InSerialiser& in, Kernel::ClassUID uid, unsigned short version)
{
    if (uid != GetClassUID())
        return false;
    if (version > GetSchemaVersion())
        throw Kernel::FutureVersionException(uid, "CurveDbl", version, GetSchemaVersion());
    std::vector<Point> points;
    std::span<const unsigned char> kinds;
    bool closed = false;
    Kernel::SavedItems::Reader items(in);
    items.Pairs("Pnts", points);
    items.Optional("Clos", closed, false);
    if (!in.LoadRawStructI("Segm", kinds))
        return false;
    const std::size_t needed = points.empty() ? 0 : 3 * kinds.size() + 1;
    const auto isKind = [](unsigned char kind) { return kind <= 1; };
    if (points.size() != needed || (points.empty() && !kinds.empty()) ||
        !std::ranges::all_of(kinds, isKind))
        return false;
    m_points = std::move(points);
    m_segments.resize(kinds.size());
    std::ranges::transform(kinds, m_segments.begin(),
                           [](unsigned char kind) { return static_cast<Segment>(kind); });
    m_closed = closed;
    return true;
}

} // namespace Geometry
