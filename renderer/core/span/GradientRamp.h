#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include <renderer/core/blend/Processor.h>
#include <renderer/paint/Gradient.h>

namespace Renderer {

/// The colours along a gradient, evaluated exactly: interpolated unpremultiplied in the format's
/// channels from stop to stop. Immutable.
template<class Processor>
class GradientRamp
{
public:
    using Pixel = typename Processor::Pixel;
    using FloatPixel = typename Processor::FloatPixel;

    /// The stretch from one stop to the next; the first one lies before all stops and the last one
    /// after them, both of one colour.
    struct Segment
    {
        double start;
        double scale; ///< 1 / length; 0 for segments of one colour
        GradientMapping mapping;
        bool isLinear;
        FloatPixel colour; ///< at the start, unpremultiplied
        FloatPixel change; ///< over the segment
        float noise;
        float noiseChange;
    };

    /// \pre \p gradient has stops.
    GradientRamp(const Gradient& gradient, const typename Processor::Profiles& profiles)
    {
        const auto& stops = gradient.GetColours();
        m_segments.reserve(stops.size() + 1);
        m_segments.push_back(MakeSegment(stops.front(), profiles));
        m_segments.front().start = -2.0;
        for (const auto& stop : stops)
            m_segments.push_back(MakeSegment(stop, profiles));
        for (std::size_t i = 1; i + 1 < GetCount(); ++i)
            LeadTo(m_segments[i], m_segments[i + 1]);
    }

    std::size_t GetCount() const noexcept { return m_segments.size(); }
    const Segment& GetSegment(std::size_t index) const noexcept { return m_segments[index]; }

    /// The segment that holds \p t ≥ −1: the last one that starts at or before it, so that at a
    /// hard edge the later stop counts. \param hint a segment near by; any valid index will do.
    std::size_t Find(double t, std::size_t hint) const noexcept
    {
        if (Holds(hint, t))
            return hint;
        if (hint + 1 < GetCount() && Holds(hint + 1, t))
            return hint + 1;
        const auto after =
            std::upper_bound(m_segments.begin() + 1, m_segments.end(), t,
                             [](double value, const Segment& s) { return value < s.start; });
        return static_cast<std::size_t>(after - m_segments.begin()) - 1;
    }

    /// The share of the way's end at \p t of the segment.
    static double GetMix(const Segment& segment, double t) noexcept
    {
        const double u = (t - segment.start) * segment.scale;
        return segment.isLinear ? u : segment.mapping.Mix(u);
    }

    /// The unpremultiplied colour at \p t of the segment.
    static FloatPixel GetColour(const Segment& segment, double t) noexcept
    {
        return Mix(segment, static_cast<float>(GetMix(segment, t)));
    }

    /// The unpremultiplied colour at a share of the way's end.
    static FloatPixel Mix(const Segment& segment, float mix) noexcept
    {
        FloatPixel colour = segment.colour;
        for (std::size_t i = Processor::FirstChannel; i < colour.size(); ++i)
            colour[i] += segment.change[i] * mix;
        return colour;
    }

    /// The premultiplied pixel at \p t; \p segment is a hint and becomes the segment of \p t.
    Pixel GetPixel(double t, std::size_t& segment) const noexcept
    {
        segment = Find(t, segment);
        return Processor::Store(GetColour(m_segments[segment], t));
    }

    /// The premultiplied pixels of \p count parameters within [−1, 1].
    void Evaluate(const double* t, unsigned count, Pixel* out) const noexcept
    {
        ForStretches(t, count, [&](const Segment& segment, unsigned begin, unsigned length) {
            EvaluateFast<ToNearest>(segment, t + begin, length, out + begin, nullptr);
        });
    }

    /// The same with what is added to each pixel's channels before they are cut to integers.
    void EvaluateDithered(const double* t, unsigned count, Pixel* out,
                          const float* thresholds) const noexcept
    {
        ForStretches(t, count, [&](const Segment& segment, unsigned begin, unsigned length) {
            EvaluateFast<ByThreshold>(segment, t + begin, length, out + begin, thresholds + begin);
        });
    }

    bool IsOpaque() const noexcept
    {
        return std::all_of(m_segments.begin(), m_segments.end(),
                           [](const Segment& segment) { return segment.colour.back() == 1.0F; });
    }

    bool HasNoise() const noexcept
    {
        return std::any_of(m_segments.begin(), m_segments.end(),
                           [](const Segment& segment) { return segment.noise != 0.0F; });
    }

    std::size_t GetByteSize() const noexcept { return m_segments.capacity() * sizeof(Segment); }

    /// The noise amounts of \p count parameters: those of the stops, mixed like their colours.
    void EvaluateNoise(const double* t, unsigned count, float* amounts) const noexcept
    {
        std::size_t index = 0;
        for (unsigned i = 0; i < count; ++i) {
            index = Find(t[i], index);
            const Segment& segment = m_segments[index];
            amounts[i] =
                segment.noise + segment.noiseChange * static_cast<float>(GetMix(segment, t[i]));
        }
    }

private:
    bool Holds(std::size_t index, double t) const noexcept
    {
        return t >= m_segments[index].start &&
               (index + 1 == GetCount() || t < m_segments[index + 1].start);
    }

    /// Calls \p function for neighbours that lie in one segment.
    template<class Function>
    void ForStretches(const double* t, unsigned count, const Function& function) const
    {
        std::size_t index = 0;
        for (unsigned i = 0; i < count;) {
            index = Find(t[i], index);
            unsigned end = i + 1;
            while (end < count && Holds(index, t[end]))
                ++end;
            function(m_segments[index], i, end - i);
            i = end;
        }
    }

    /// How channels become integers.
    struct ToNearest
    {
        static float Get(const float*, unsigned) noexcept { return 0.5F; }
        static const float* Move(const float*, unsigned) noexcept { return nullptr; }
    };
    struct ByThreshold
    {
        static float Get(const float* thresholds, unsigned i) noexcept { return thresholds[i]; }
        static const float* Move(const float* thresholds, unsigned i) noexcept
        {
            return thresholds + i;
        }
    };

    /// The pixels of \p count parameters that all lie in one segment.
    template<class Rounding>
    struct EvaluateWithin
    {
        static void Apply(const Segment* segment, const double* t, unsigned count, Pixel* out,
                          const float* thresholds)
        {
            const Segment s = *segment; // out of the way of what is written
            for (unsigned begin = 0; begin < count; begin += Processor::BlockLength) {
                const unsigned length = std::min(count - begin, Processor::BlockLength);
                float mixes[Processor::BlockLength];
                if (s.isLinear) {
                    for (unsigned i = 0; i < length; ++i)
                        mixes[i] = static_cast<float>((t[begin + i] - s.start) * s.scale);
                } else {
                    for (unsigned i = 0; i < length; ++i)
                        mixes[i] =
                            static_cast<float>(s.mapping.Mix((t[begin + i] - s.start) * s.scale));
                }
                StoreMixes<Rounding>(s, mixes, length, out + begin,
                                     Rounding::Move(thresholds, begin));
            }
        }
    };

    template<class Rounding>
    static void StoreMixes(const Segment& segment, const float* mixes, unsigned count, Pixel* out,
                           const float* thresholds) noexcept
    {
        if constexpr (Processor::HasWords) {
            typename Processor::Word words[Processor::BlockLength];
            for (unsigned i = 0; i < count; ++i)
                words[i] =
                    Processor::StoreWord(Mix(segment, mixes[i]), Rounding::Get(thresholds, i));
            std::memcpy(out->channels.data(), words, count * sizeof(Pixel));
        } else {
            for (unsigned i = 0; i < count; ++i)
                out[i] = Processor::Store(Mix(segment, mixes[i]), Rounding::Get(thresholds, i));
        }
    }

    /// EvaluateWithin for the present processor.
    template<class Rounding>
    static void EvaluateFast(const Segment& segment, const double* t, unsigned count, Pixel* out,
                             const float* thresholds)
    {
        using namespace Blending;
        using Work = EvaluateWithin<Rounding>;
        static const auto function = HasWideCode()
                                         ? &WideCode::Call<Work, const Segment*, const double*,
                                                           unsigned, Pixel*, const float*>
                                         : &BaselineCode::Call<Work, const Segment*, const double*,
                                                               unsigned, Pixel*, const float*>;
        function(&segment, t, count, out, thresholds);
    }

    static Segment MakeSegment(const Gradient::ColourPosition& stop,
                               const typename Processor::Profiles& profiles)
    {
        const GradientMapping mapping = stop.GetMapping();
        return {stop.position,
                0.0,
                mapping,
                mapping.IsLinear(),
                Processor::ToFloat(Processor::GetPixel(*stop.colour, profiles)),
                {},
                static_cast<float>(stop.colour->GetNoise()),
                0.0F};
    }

    static void LeadTo(Segment& segment, const Segment& next) noexcept
    {
        const double length = next.start - segment.start;
        segment.scale = length > 0.0 ? 1.0 / length : 0.0;
        for (std::size_t i = 0; i < segment.change.size(); ++i)
            segment.change[i] = next.colour[i] - segment.colour[i];
        segment.noiseChange = next.noise - segment.noise;
    }

    std::vector<Segment> m_segments;
};

} // namespace Renderer
