#pragma once

#include <array>
#include <memory>
#include <vector>

#include "Scene.h"

namespace Benchmarks {

/// Curves may leave their true course by this many pixels, whoever draws them.
inline constexpr double Tolerance = 0.1;

/// Rows from the top, without padding; red, green, blue, alpha, premultiplied.
using Picture = std::vector<std::array<unsigned char, 4>>;

/// A rasteriser with its page, ready to draw one scene. What an application would keep from frame
/// to frame (paint, bitmaps) is made by the constructor.
class Peer
{
public:
    virtual ~Peer() = default;
    /// Draws the scene onto the page as it is.
    virtual void Draw() = 0;
    virtual Picture GetPicture() const = 0;
};

/// Each keeps a reference to the scene.
std::unique_ptr<Peer> MakeRendererPeer(const Scene& scene);
std::unique_ptr<Peer> MakeCairoPeer(const Scene& scene);
std::unique_ptr<Peer> MakeAggPeer(const Scene& scene);
std::unique_ptr<Peer> MakeQtPeer(const Scene& scene);

struct PeerEntry
{
    const char* name;
    std::unique_ptr<Peer> (*make)(const Scene& scene);
};

inline constexpr std::array Peers{
    PeerEntry{"renderer", MakeRendererPeer},
    PeerEntry{"cairo", MakeCairoPeer},
    PeerEntry{"agg", MakeAggPeer},
    PeerEntry{"qt", MakeQtPeer},
};

} // namespace Benchmarks
