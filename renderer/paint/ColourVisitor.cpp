#include <renderer/paint/ColourVisitor.h>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourHSL.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRegistration.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillBitmap.h>

namespace Renderer {

namespace {

using AnyColour = Kernel::Counted<const Colour>;

} // namespace

ColourVisitor::~ColourVisitor() = default;

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourHSL>& colour)
{
    return Visit(AnyColour(colour));
}

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourRGB>& colour)
{
    return Visit(AnyColour(colour));
}

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourCMYK>& colour)
{
    return Visit(AnyColour(colour));
}

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourGrayscale>& colour)
{
    return Visit(AnyColour(colour));
}

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourLAB>& colour)
{
    return Visit(AnyColour(colour));
}

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourNamed>& colour)
{
    return Visit(AnyColour(colour));
}

AnyColour ColourVisitor::Visit(const Kernel::Counted<const ColourRegistration>& colour)
{
    return Visit(AnyColour(colour));
}

Kernel::Counted<const FillBitmap>
ColourVisitor::Visit(const Kernel::Counted<const FillBitmap>& fill)
{
    return fill;
}

AnyColour ColourVisitor::Visit(const AnyColour& colour)
{
    return colour;
}

} // namespace Renderer
