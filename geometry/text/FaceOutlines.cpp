#include <geometry/text/FaceOutlines.h>

#include <cmath>
#include <mutex>

#include <ft2build.h>

#include <freetype/freetype.h>
#include <freetype/ftoutln.h>

#include <kernel/FormatException.h>

namespace Geometry {

namespace {

/// The library itself, shared by all faces. FreeType wants faces opened and closed one at a time.
struct Library
{
    std::mutex mutex;
    FT_Library handle = nullptr;

    Library() { FT_Init_FreeType(&handle); }

    /// Never destroyed: faces may outlive static objects.
    static Library& GetInstance()
    {
        static Library& library = *new Library;
        return library;
    }
};

/// Turns what FreeType tells of an outline into a path.
class OutlineBuilder
{
public:
    /// \param scale units of the em per unit of the outline.
    explicit OutlineBuilder(double scale) : m_scale(scale) {}

    Kernel::Counted<const PolyCurveDbl> Take()
    {
        Close();
        return m_path->IsEmpty() ? nullptr : Kernel::Counted<const PolyCurveDbl>(m_path);
    }

    static int MoveTo(const FT_Vector* to, void* self)
    {
        static_cast<OutlineBuilder*>(self)->Start(*to);
        return 0;
    }
    static int LineTo(const FT_Vector* to, void* self)
    {
        static_cast<OutlineBuilder*>(self)->Line(*to);
        return 0;
    }
    static int ConicTo(const FT_Vector* control, const FT_Vector* to, void* self)
    {
        auto& builder = *static_cast<OutlineBuilder*>(self);
        builder.m_path->QuadTo(builder.Map(*control), builder.Go(*to));
        return 0;
    }
    static int CubicTo(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to,
                       void* self)
    {
        auto& builder = *static_cast<OutlineBuilder*>(self);
        builder.m_path->CurveTo(builder.Map(*control1), builder.Map(*control2), builder.Go(*to));
        return 0;
    }

private:
    Point Map(const FT_Vector& p) const { return {m_scale * double(p.x), -m_scale * double(p.y)}; }
    Point Go(const FT_Vector& p)
    {
        m_last = p;
        return Map(p);
    }
    void Start(const FT_Vector& p)
    {
        Close();
        m_path->MoveTo(Go(p));
    }
    void Line(const FT_Vector& p)
    {
        // Contours that end where they began are closed by a line of no length.
        if (p.x != m_last.x || p.y != m_last.y)
            m_path->LineTo(Go(p));
    }
    void Close()
    {
        if (!m_path->IsEmpty())
            m_path->Close();
    }

    double m_scale;
    Kernel::Counted<PolyCurveDbl> m_path = Kernel::MakeCounted<PolyCurveDbl>();
    FT_Vector m_last{};
};

} // namespace

struct FaceOutlines::Contents
{
    FT_Face face = nullptr;
    FontSynthesis synthesis;

    ~Contents()
    {
        if (!face)
            return;
        Library& library = Library::GetInstance();
        const std::lock_guard lock(library.mutex);
        FT_Done_Face(face);
    }

    void Open(std::span<const unsigned char> bytes, unsigned index)
    {
        Library& library = Library::GetInstance();
        const std::lock_guard lock(library.mutex);
        if (FT_New_Memory_Face(library.handle, bytes.data(), FT_Long(bytes.size()), FT_Long(index),
                               &face))
            face = nullptr;
    }

    /// Alters the outline that was loaded last.
    void Synthesise()
    {
        FT_Outline& outline = face->glyph->outline;
        if (synthesis.bold) {
            const FT_Pos growth = 64 * FT_Pos(face->units_per_EM) / 24;
            FT_Outline_Embolden(&outline, growth);
            FT_Outline_Translate(&outline, -growth / 2, -growth / 2);
        }
        if (synthesis.slant != 0.0) {
            const FT_Matrix lean{0x10000, FT_Fixed(std::lround(synthesis.slant * 0x10000)), 0,
                                 0x10000};
            FT_Outline_Transform(&outline, &lean);
        }
    }
};

FaceOutlines::FaceOutlines(std::span<const unsigned char> bytes, unsigned index,
                           const FontSynthesis& synthesis)
    : m_contents(std::make_unique<Contents>())
{
    m_contents->synthesis = synthesis;
    m_contents->Open(bytes, index);
    const FT_Face face = m_contents->face;
    if (!face)
        throw Kernel::FormatException("it is no font, or damaged");
    if (!FT_IS_SCALABLE(face) || !FT_IS_SFNT(face))
        throw Kernel::FormatException("it is no TrueType or OpenType font with outlines");
    // At as many pixels to the em as it has units, coordinates are whole or, where cubic curves or
    // variations break them, precise to 1/64 unit.
    if (FT_Set_Pixel_Sizes(face, 0, face->units_per_EM))
        throw Kernel::FormatException("it is damaged");
}

FaceOutlines::~FaceOutlines() = default;

std::string FaceOutlines::GetFamily() const
{
    const char* const name = m_contents->face->family_name;
    return name ? name : "";
}

unsigned FaceOutlines::GetUnitsPerEm() const noexcept
{
    return m_contents->face->units_per_EM;
}

Kernel::Counted<const PolyCurveDbl> FaceOutlines::Load(std::uint32_t glyph)
{
    const FT_Face face = m_contents->face;
    if (FT_Load_Glyph(face, glyph, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) ||
        face->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        throw Kernel::FormatException("glyph " + std::to_string(glyph) + " is damaged");
    m_contents->Synthesise();
    static constexpr FT_Outline_Funcs functions{OutlineBuilder::MoveTo,
                                                OutlineBuilder::LineTo,
                                                OutlineBuilder::ConicTo,
                                                OutlineBuilder::CubicTo,
                                                0,
                                                0};
    OutlineBuilder builder(1.0 / (64.0 * GetUnitsPerEm()));
    if (FT_Outline_Decompose(&face->glyph->outline, &functions, &builder))
        throw Kernel::FormatException("glyph " + std::to_string(glyph) + " is damaged");
    return builder.Take();
}

} // namespace Geometry
