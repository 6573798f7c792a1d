#include <geometry/PolyCurve.h>

namespace Geometry {

PolyCurveDbl::PolyCurveDbl(CurveDbl curve)
{
    AddCurve(std::move(curve));
}

void PolyCurveDbl::AddCurve(CurveDbl curve)
{
    m_curves.push_back(std::move(curve));
}

} // namespace Geometry
