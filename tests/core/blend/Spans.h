#pragma once

#include <algorithm>
#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

namespace BlendTests {

inline constexpr unsigned length = 201; // several blocks and an incomplete one

/// Random pixels, coverage and masks, the edges of all of them included.
template<class P>
struct Spans
{
    std::vector<P> source, backdrop;
    std::vector<unsigned char> covers, masks;

    explicit Spans(bool valid)
    {
        std::mt19937 random(3);
        for (unsigned i = 0; i < length; ++i) {
            source.push_back(Make(random, valid));
            backdrop.push_back(Make(random, valid));
            covers.push_back(static_cast<unsigned char>(i % 5 == 0 ? 0 : random()));
            masks.push_back(static_cast<unsigned char>(i % 7 == 0 ? 0 : random()));
        }
    }

private:
    static P Make(std::mt19937& random, bool valid)
    {
        using T = typename P::ChannelType;
        P pixel;
        for (T& channel : pixel.channels) {
            if constexpr (std::is_integral_v<T>)
                channel = static_cast<T>(random());
            else
                channel = static_cast<T>(random() % 1001) / T(1000);
        }
        if (random() % 4 == 0)
            pixel.Alpha() = random() % 2 ? P::Max : T{0};
        for (T& channel : pixel.channels)
            channel = valid ? std::min(channel, pixel.Alpha()) : channel;
        return pixel;
    }
};

template<class P>
bool SameBytes(const std::vector<P>& a, const std::vector<P>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(P)) == 0;
}

} // namespace BlendTests
