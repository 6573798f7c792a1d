#include "TargetFixture.h"

#include <cmath>

#include <ft2build.h>

#include <freetype/freetype.h>

#include <geometry/text/ShapeText.h>

namespace Renderer {
namespace {

class TextTest : public TargetTest
{
protected:
    const Kernel::Font sans{"DejaVu Sans"};
};

/// FreeType's own pictures of a font's glyphs.
class FreeTypePictures
{
public:
    FreeTypePictures(const char* path, unsigned size)
    {
        FT_Init_FreeType(&m_library);
        EXPECT_EQ(FT_New_Face(m_library, path, 0, &m_face), 0);
        FT_Set_Pixel_Sizes(m_face, 0, size);
    }
    ~FreeTypePictures()
    {
        FT_Done_Face(m_face);
        FT_Done_FreeType(m_library);
    }

    /// Draws a glyph whose origin is at a whole pixel. \return the pixels of its picture.
    unsigned Draw(unsigned glyph, int x, int y, std::vector<int>& alpha, int width)
    {
        EXPECT_EQ(FT_Load_Glyph(m_face, glyph, FT_LOAD_NO_HINTING | FT_LOAD_RENDER), 0);
        const FT_GlyphSlot slot = m_face->glyph;
        for (unsigned row = 0; row < slot->bitmap.rows; ++row) {
            for (unsigned column = 0; column < slot->bitmap.width; ++column) {
                const int place =
                    (y - slot->bitmap_top + int(row)) * width + x + slot->bitmap_left + int(column);
                alpha.at(std::size_t(place)) +=
                    slot->bitmap.buffer[row * unsigned(slot->bitmap.pitch) + column];
            }
        }
        return slot->bitmap.rows * slot->bitmap.width;
    }

private:
    FT_Library m_library = nullptr;
    FT_Face m_face = nullptr;
};

TEST_F(TextTest, GlyphsCoverWhatFreeTypeCovers)
{
    const char* const path = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";
    const auto face = Geometry::FontFace::Load(path);
    constexpr int cell = 48, columns = 16, side = cell * columns;
    FreeTypePictures pictures(path, 24);
    for (unsigned first = 0; first < 4; ++first) {
        auto page = Make(side, side);
        page->SetDeviceExpansionTolerance(0.02);
        std::vector<int> expected(std::size_t(side) * side);
        unsigned pixels = 0;
        for (unsigned i = 0; i < columns * columns; ++i) {
            const int x = 12 + cell * int(i % columns), y = 32 + cell * int(i / columns);
            const auto glyph = face->GetGlyph(first + 13 * i);
            const auto bounds = glyph->GetBounds();
            const bool fits = !bounds.IsValid() ||
                              (bounds.GetRect().left > -0.4 && bounds.GetRect().right < 1.4 &&
                               bounds.GetRect().top > -1.2 && bounds.GetRect().bottom < 0.6);
            if (!fits)
                continue;
            pixels += pictures.Draw(glyph->GetIndex(), x, y, expected, side);
            page->DrawGlyphMetrics({double(x), double(y)}, {glyph}, Kernel::Font(), 24.0, nullptr,
                                   1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                                   Solid({{0, 0, 0, 255}}), {}, {}, {}, true);
        }
        const auto bytes = BytesOf(page);
        double error = 0.0;
        int largest = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const int difference = std::abs(bytes[4 * i + 3] - expected[i]);
            largest = std::max(largest, difference);
            error += difference;
        }
        // FreeType draws outlines that are rounded to 1/64 of a pixel.
        EXPECT_LT(error / pixels, 1.0);
        EXPECT_LT(largest, 32);
        EXPECT_GT(pixels, 20000U);
    }
}

TEST_F(TextTest, TextCoversWhatIsMeasured)
{
    const char* const text = "Tj\u05D0f\u0302";
    const auto extents = RenderTarget::MeasureText(text, sans, 12.0);
    const Geometry::FontMetrics& metrics =
        Geometry::FontSelection::Find(sans)->GetFace()->GetMetrics();
    EXPECT_EQ(extents.ascent, 12.0 * metrics.ascent);
    EXPECT_EQ(extents.descent, 12.0 * metrics.descent);
    EXPECT_GT(extents.advance, 15.0);
    EXPECT_LT(extents.advance, Width);
    EXPECT_LT(extents.bounds.top, -9.0);
    EXPECT_GT(extents.bounds.bottom, 2.0);

    target->DrawText({4.0, 20.0}, text, sans, 12.0, 1.0F, Solid(Red));
    Geometry::BoundingBoxT<int> touched;
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            if (At(x, y) != Nothing)
                touched.Add({x, y});
        }
    }
    EXPECT_EQ(touched.GetRect().left, std::floor(4.0 + extents.bounds.left));
    EXPECT_EQ(touched.GetRect().right, std::ceil(4.0 + extents.bounds.right) - 1);
    EXPECT_NEAR(touched.GetRect().top, std::floor(20.0 + extents.bounds.top), 1);
    EXPECT_NEAR(touched.GetRect().bottom, std::ceil(20.0 + extents.bounds.bottom) - 1, 1);

    const auto twice = RenderTarget::MeasureText(text, sans, 24.0);
    EXPECT_DOUBLE_EQ(twice.advance, 2.0 * extents.advance);
    EXPECT_NEAR(twice.bounds.right, 2.0 * extents.bounds.right, 1e-9);
}

TEST_F(TextTest, WhatCannotBeDrawnIsLeftOut)
{
    const double nan = std::nan("");
    for (const double size : {0.0, -3.0, nan, HUGE_VAL, 1e300}) {
        target->DrawText({4.0, 20.0}, "text", sans, size, 1.0F, Solid(Red));
        target->DrawText({nan, 20.0}, "text", sans, size, 1.0F, Solid(Red));
    }
    target->DrawText({4.0, 20.0}, "", sans, 10.0, 1.0F, Solid(Red));
    target->DrawText({4.0, 20.0}, "\xFF \n\t\u200D", Kernel::Font("No Such Family"), 0.01, 1.0F,
                     Solid(Red));
    EXPECT_EQ(RenderTarget::MeasureText("text", sans, nan).advance, 0.0);
    EXPECT_EQ(RenderTarget::MeasureText("", sans, 10.0).bounds, Kernel::RectT<double>());
    target->SetAbort(true);
    target->DrawText({4.0, 20.0}, "text", sans, 10.0, 1.0F, Solid(Red));
    target->SetAbort(false);
    EXPECT_LT(Area(), 1.0);
    target->DrawText({4.0, 20.0}, "text", sans, 10.0, 1.0F, Solid(Red));
    EXPECT_GT(Area(), 30.0);
}

} // namespace
} // namespace Renderer
