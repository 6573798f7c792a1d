#include "Check.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Peer.h"

namespace Benchmarks {

namespace {

/// The mean difference per channel over all pixels that either picture has something in.
double Compare(const Picture& a, const Picture& b)
{
    double sum = 0.0;
    double pixels = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i][3] == 0 && b[i][3] == 0)
            continue;
        for (std::size_t channel = 0; channel < 4; ++channel)
            sum += std::abs(a[i][channel] - b[i][channel]);
        pixels += 4.0;
    }
    return pixels == 0.0 ? 0.0 : sum / pixels;
}

Picture Draw(const PeerEntry& entry, const Scene& scene)
{
    const auto peer = entry.make(scene);
    peer->Draw();
    return peer->GetPicture();
}

} // namespace

bool CheckPeers(const std::vector<Case>& cases)
{
    bool alike = true;
    for (const Case& item : cases) {
        const Scene scene = item.makeScene();
        const Picture reference = Draw(Peers[0], scene);
        if (scene.leftOut != 0)
            std::printf("%s: %u calls left out\n", item.name.c_str(), scene.leftOut);
        for (std::size_t i = 1; i < Peers.size(); ++i) {
            if (!item.inCairo && Peers[i].name == std::string_view("cairo"))
                continue;
            const double difference = Compare(reference, Draw(Peers[i], scene));
            const bool fine = difference <= item.tolerance;
            alike = alike && fine;
            std::printf("%s/%s: %.2f%s\n", item.name.c_str(), Peers[i].name, difference,
                        fine ? "" : " TOO FAR");
        }
    }
    return alike;
}

} // namespace Benchmarks
