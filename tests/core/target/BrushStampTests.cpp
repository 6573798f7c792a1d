// Where stamps of raster brushes lie, and what many of them make.

#include "BrushFixture.h"

namespace Renderer {
namespace {

using BrushStampTest = BrushTest;

/// One stamp is a rectangle like any other.
TEST_F(BrushStampTest, StampsCoverWhatTheirRectanglesCover)
{
    Random random(2);
    for (int i = 0; i < 40; ++i) {
        const double angle = random.In(0, 6.3), weight = random.In(0.2, 90);
        const Geometry::Point centre{random.In(60, 240), random.In(60, 240)};
        Settings settings;
        settings.spacing = 100;
        settings.rotation = 0.4;
        settings.tipUse = Settings::TipUse::OwnColours;
        const Geometry::Point along{std::cos(angle), std::sin(angle)};
        const Target page = MakePage(), plain = MakePage();
        Stroke(page, MakeLine(centre, centre + along),
               MakeStyle(MakeFlatTip(Green, 6, 2), settings, weight), {});
        plain->PushTransform(Raster::AffineTransform::Concatenate(
                                 Raster::AffineTransform::Rotation(angle + 0.4),
                                 Raster::AffineTransform::Translation(centre.x, centre.y)),
                             RenderTarget::TransformScalarMode::Concatenate);
        plain->DrawRectangle({-1.5 * weight, -0.5 * weight, 1.5 * weight, 0.5 * weight}, 1.0F,
                             Solid(Green), {}, {});
        plain->PopTransform();
        for (int y = 0; y < int(PageSide); ++y)
            for (int x = 0; x < int(PageSide); ++x)
                ASSERT_NEAR(PixelOf(page, x, y).Alpha(), PixelOf(plain, x, y).Alpha(), 3)
                    << i << ' ' << x << ' ' << y;
    }
}

/// Where the stamps of a straight line are, by the columns that they touch.
std::vector<int> GetStampColumns(const Target& page, int y)
{
    RGBA8Buffer view;
    EXPECT_TRUE(view.Attach(page->GetBuffer()));
    std::vector<int> starts;
    for (int x = 1; x < int(PageSide); ++x)
        if (view.GetRow(unsigned(y))[x].Alpha() > 127 &&
            view.GetRow(unsigned(y))[x - 1].Alpha() <= 127)
            starts.push_back(x);
    return starts;
}

TEST_F(BrushStampTest, StampsLieBySpacingAndPressure)
{
    const Tip square = MakeFlatTip(Red);
    Settings settings;
    settings.spacing = 2.5;
    const Target page = MakePage();
    Stroke(page, MakeLine({20, 50}, {271, 50}), MakeStyle(square, settings, 10));
    EXPECT_EQ(GetStampColumns(page, 50),
              (std::vector{15, 40, 65, 90, 115, 140, 165, 190, 215, 240, 265}));
    EXPECT_EQ(GetStampColumns(page, 54).size(), 11U);
    EXPECT_TRUE(GetStampColumns(page, 55).empty());
    // Steps are as long as the tip is large: 25 · (1 − x / 250) from x on.
    Stroke(page, MakeLine({20, 150}, {270, 150}),
           MakeStyle(square, settings, 10, LineStyle::RoundJoin, MakePressure(1, 0.5, 0)));
    const auto starts = GetStampColumns(page, 150);
    ASSERT_GT(starts.size(), 12U);
    double place = 20.0;
    for (int i = 0; i < 12; ++i) {
        const double pressure = 1.0 - (place - 20) / 250;
        EXPECT_NEAR(starts[std::size_t(i)], place - 5 * pressure, 1.0);
        place += 25 * pressure;
    }
    // A closed run has a whole number of even steps: 200 · π / 25 is 25.1.
    const auto circle = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    circle->AddEllipse({150, 150}, 100, 100);
    const Target round = MakePage();
    Stroke(round, circle, MakeStyle(square, settings, 10));
    for (int i = 0; i < 50; ++i) {
        const double angle = 3.14159265358979 / 25 * i;
        const int x = int(150 + 100 * std::cos(angle)), y = int(150 + 100 * std::sin(angle));
        EXPECT_EQ(PixelOf(round, x, y).Alpha(), i % 2 == 0 ? 255 : 0) << i;
    }
}

/// Stamps that lie closer than can be told apart give what each of them gives. Those that jitter,
/// however little, are painted one by one.
TEST_F(BrushStampTest, DenseStampsAreAsIfPaintedOneByOne)
{
    struct Case
    {
        unsigned tipWidth, tipHeight;
        double weight, opacity, rotation;
        bool followsPath, hasCorner, isPressed;
    };
    Random random(1);
    for (const Case& c :
         {Case{1, 200, 100, 0.02, 0.0, true, false, false},
          Case{1, 200, 100, 1.0, 0.4, true, false, true},
          Case{1, 40, 3, 0.02, 0.0, false, false, false},
          Case{3, 40, 30, 0.01, 1.5, true, true, true}, Case{1, 1, 3, 0.3, 0.2, false, true, false},
          Case{7, 9, 8, 0.01, 0.0, true, false, true}})
        for (const auto overlap : {Settings::Overlap::BuildUp, Settings::Overlap::MaxOpacity}) {
            const Path path = c.hasCorner ? MakeLine({40, 99.3}, {99, 30}) : random.MakeWave();
            if (c.hasCorner)
                path->LineTo({99, 120});
            Settings settings;
            settings.spacing = 0.02;
            settings.overlap = overlap;
            settings.opacity = c.opacity;
            settings.rotation = c.rotation;
            settings.followsPath = c.followsPath;
            const Pressure pressure = c.isPressed ? MakePressure(0.1, 1.5, 0.4) : Pressure();
            const auto draw = [&](double jitter) {
                settings.positionJitter = jitter;
                const Target page = MakePage();
                Stroke(page, path,
                       MakeStyle(MakeNoiseTip(c.tipWidth, c.tipHeight), settings, c.weight,
                                 LineStyle::RoundJoin, pressure));
                return BytesOf(page);
            };
            const auto dense = draw(0.0), single = draw(1e-12);
            // The largest opacity is found within 1/64 of a pixel.
            const int tolerance = overlap == Settings::Overlap::BuildUp ? 2 : 4;
            for (std::size_t i = 3; i < dense.size(); i += 4)
                ASSERT_NEAR(dense[i], single[i], tolerance)
                    << c.tipHeight << ' ' << c.weight << ": " << i / 4 % PageSide << ' '
                    << i / 4 / PageSide;
        }
}

/// However many stamps there are, they build up to what they should: here three million.
TEST_F(BrushStampTest, CountlessStampsBuildUp)
{
    Settings settings;
    settings.spacing = 0.01;
    for (const double opacity : {0.002, 0.02, 1.0}) {
        settings.opacity = opacity;
        const Target page = MakePage();
        Stroke(page, MakeLine({10, 100}, {290, 100}),
               MakeStyle(MakeFlatTip(Red, 1, 2000), settings, 20));
        // A tip of a hundredth of a pixel is set down ten thousand times in a pixel.
        const double expected = 255.0 * -std::expm1(-opacity / settings.spacing);
        for (const unsigned x : {30U, 151U, 270U})
            EXPECT_NEAR(PixelOf(page, x, 100).Alpha(), expected, 1.5) << opacity;
    }
}

} // namespace
} // namespace Renderer
