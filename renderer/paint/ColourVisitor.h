#pragma once

#include <kernel/Counted.h>
#include <renderer/Export.h>

namespace Renderer {

class Colour;
class ColourCMYK;
class ColourGrayscale;
class ColourHSL;
class ColourLAB;
class ColourNamed;
class ColourRGB;
class ColourRegistration;
class FillBitmap;

/// Replaces colours: `Accept` of colours, fills and effects hands every colour to the visitor and
/// puts its answer in the colour's place. By default each Visit returns what it was given, through
/// the form that takes any colour.
class RENDERER_EXPORT ColourVisitor
{
public:
    virtual ~ColourVisitor();
    virtual Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourHSL>& colour);
    virtual Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourRGB>& colour);
    virtual Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourCMYK>& colour);
    virtual Kernel::Counted<const Colour>
    Visit(const Kernel::Counted<const ColourGrayscale>& colour);
    virtual Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourLAB>& colour);
    virtual Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourNamed>& colour);
    virtual Kernel::Counted<const Colour>
    Visit(const Kernel::Counted<const ColourRegistration>& colour);
    virtual Kernel::Counted<const FillBitmap> Visit(const Kernel::Counted<const FillBitmap>& fill);

protected:
    virtual Kernel::Counted<const Colour> Visit(const Kernel::Counted<const Colour>& colour);
};

} // namespace Renderer
