#include "Drawing.h"

#include <cmath>
#include <optional>

#include <kernel/FormatException.h>

#include "Context.h"
#include "Document.h"
#include "Scanner.h"
#include "Scopes.h"
#include "ViewBox.h"
#include "Walker.h"

namespace Svg {

namespace {

// The extent of pictures that say nothing about it (CSS 2.1, 10.3.2 and 10.6.2).
constexpr double DefaultWidth = 300.0;
constexpr double DefaultHeight = 150.0;

/// An extent of the root in pixels. \return nothing when it is missing or relative.
std::optional<double> FindAbsolute(const Element& root, std::string_view name)
{
    const std::string_view text = Trim(root.Get(name));
    if (text.empty() || text == "auto")
        return std::nullopt;
    const auto length = ParseLength(text);
    if (!length)
        throw Kernel::FormatException("the drawing's " + std::string(name) + " is not a length");
    if (length->IsPercentage())
        return std::nullopt;
    const double value = length->Resolve({}, LengthAxis::Horizontal);
    if (!(value > 0.0) || !std::isfinite(value))
        throw Kernel::FormatException("the drawing's " + std::string(name) + " is not positive");
    return value;
}

} // namespace

struct Drawing::Contents
{
    Contents(std::string bytes, const std::filesystem::path& folder)
        : document(std::move(bytes)), context(document, folder)
    {}

    Document document;
    Context context;
};

Drawing::Drawing(std::string bytes, std::filesystem::path folder)
    : m_contents(std::make_unique<Contents>(std::move(bytes), folder))
{
    FindExtent();
}

Drawing::~Drawing() = default;

void Drawing::FindExtent()
{
    const Element& root = m_contents->document.GetRoot();
    const auto width = FindAbsolute(root, "width");
    const auto height = FindAbsolute(root, "height");
    const auto box = ParseViewBox(root.Get("viewBox"));
    if (box && box->IsEmpty())
        throw Kernel::FormatException("the drawing's view box is empty");
    if (box) {
        // What is missing keeps the shape of the view box.
        const double ratio = box->Width() / box->Height();
        m_width = width.value_or(height ? *height * ratio : box->Width());
        m_height = height.value_or(width ? *width / ratio : box->Height());
    } else {
        m_width = width.value_or(DefaultWidth);
        m_height = height.value_or(DefaultHeight);
    }
    if (!(m_width > 0.0) || !(m_height > 0.0) || !std::isfinite(m_width) ||
        !std::isfinite(m_height))
        throw Kernel::FormatException("the drawing has no usable extent");
}

void Drawing::Draw(Renderer::RenderTarget& target, Kernel::Progress* progress)
{
    Walker(m_contents->context, target, progress).DrawDocument(m_width, m_height);
}

void Drawing::DrawWithin(Renderer::RenderTarget& target, Context& outer)
{
    Context& inner = m_contents->context;
    const ValueScope<Counts> counts(inner.GetCounts(), outer.GetCounts());
    const CountedDepth depth(inner.GetCounts().drawings, Context::MaxDrawings);
    /// Hands over what the image cost, however its drawing ends.
    struct Settlement
    {
        Context& inner;
        Context& outer;
        ~Settlement()
        {
            outer.GetCounts().usedElements = inner.GetCounts().usedElements;
            outer.GetCounts().markers = inner.GetCounts().markers;
            outer.GetCounts().characters = inner.GetCounts().characters;
            outer.GetCounts().pixels = inner.GetCounts().pixels;
            for (const std::string& notice : inner.GetNotices().Get())
                outer.GetNotices().Add(notice);
        }
    } const settlement{inner, outer};
    inner.GetTiles() = {}; // those of another picture may have been given up half way
    Walker(inner, target, nullptr).DrawWithin(m_width, m_height);
}

bool Drawing::NamesBlendModes() const noexcept
{
    return m_contents->document.NamesBlendModes();
}

const std::vector<std::string>& Drawing::GetNotices() const noexcept
{
    return m_contents->context.GetNotices().Get();
}

} // namespace Svg
