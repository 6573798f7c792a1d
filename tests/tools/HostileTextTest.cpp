#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <svg/TextLayout.h>

#include "TestDrawing.h"

namespace {

using namespace Svg;

std::string Repeat(const std::string& text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string Number(const std::string& before, int count, const std::string& after)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += before + std::to_string(i) + after;
    return result;
}

TEST(HostileText, EndsAndIsDrawn)
{
    // Each would take minutes or more if its time grew by the square of its length.
    struct Case
    {
        const char* name;
        std::string content;
        std::size_t shapes;
        std::vector<std::string> notices;
    };
    const Case cases[] = {
        {"families", "<text font-family='serif" + Number(",f", 60'000, "") + "'>a</text>", 1, {}},
        {"features",
         "<text font-feature-settings='\"liga\" on" + Repeat(",\"liga\" on", 100'000) + "'>" +
             Repeat("<tspan font-size='9'>a</tspan>", 1000) + "</text>",
         1000,
         {}},
        {"languages",
         Number("<text lang='x-", 2000, "'>a</text>"),
         2000,
         {"the drawing has more than 500 fonts; the rest look like the others"}},
        {"lengths",
         "<text>" + Repeat("<tspan textLength='9'>a</tspan>", 5000) + "</text>",
         5000,
         {"too much text is to be fitted to lengths; the rest keeps its own"}},
        {"isolates", "<text>" + Repeat("\u2067a\u2069", 20'000) + "</text>", 30, {}},
        {"elements of controls alone",
         "<text>a" + Repeat("<tspan unicode-bidi='isolate-override' direction='rtl'/> ", 60'000) +
             "</text>",
         1,
         {"text of more than 200,000 characters is cut"}},
        // Measured for each text, the path would be over the limit.
        {"texts on a path",
         "<path id='p' d='M0 50" + Repeat("q1 2 2 0", 2000) + "' fill='none'/>" +
             Repeat("<text><textPath href='#p'>a</textPath></text>", 2000),
         2000,
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Recorded recorded(MakeDocument("<g font-family='serif'>" + c.content + "</g>"));
        EXPECT_EQ(recorded.target.shapes.size(), c.shapes);
        EXPECT_EQ(recorded.drawing.GetNotices(), c.notices);
    }
}

TEST(HostileText, IsLeftOutAlongTooMuchPath)
{
    const Document document(
        MakeDocument("<text id='t'><textPath path='M0 0H999'>a</textPath></text>"));
    Context context(document, {});
    const Element& text = *document.FindById("t");
    const Style& style = context.GetStyles().ResolveInPlace(text);
    const auto isHidden = [&] {
        return TextLayout(context, text, style, {}).GetClusters().front().hidden;
    };
    context.CountPathSegments(std::size_t(Context::MaxPathSegments));
    EXPECT_TRUE(isHidden());
    EXPECT_EQ(context.GetNotices().Get().size(), 1U);
    context.StartPicture(1.0); // counts afresh
    EXPECT_FALSE(isHidden());
}

} // namespace
