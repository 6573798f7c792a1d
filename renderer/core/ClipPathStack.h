#pragma once

#include <cstddef>
#include <vector>

#include <geometry/Polygon.h>
#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <renderer/core/coverage/ClipCoverage.h>
#include <renderer/core/coverage/CommonArea.h>
#include <renderer/core/coverage/CoverageStore.h>

namespace Renderer {

/// What all clip paths together let through: everything outside the window is cut, and the
/// coverage, unless empty, scales what is inside.
struct ClipState
{
    Kernel::RectT<int> window{};
    Kernel::Counted<const Coverage::ClipCoverage> coverage;
    /// With exact clipping, what the paths enclose that have a share in the coverage.
    Coverage::Regions regions;
};

/// How clip paths become coverage: the ways and the means.
struct ClipWork
{
    /// Whether pixels that several paths cover in part get the area that these have in common,
    /// rather than the product of the coverages.
    bool isExact;
    Coverage::CoverageStore& store;
    Coverage::CommonArea& area;
};

/// One clip path in device coordinates, or a group of them that are united.
class ClipPath
{
public:
    ClipPath(Kernel::Counted<const Geometry::PolyPolygonType<double>> polygons, bool evenOdd);
    /// An empty group.
    ClipPath() : m_isGroup(true) {}

    void AddMember(ClipPath member) { m_members.push_back(std::move(member)); }
    void RemoveMember();
    /// Makes sure that the next AddMember needs no memory.
    void MakeRoomForMember();

    /// Narrows \p state by what this path lets through.
    void Narrow(ClipState& state, ClipWork& work) const;

private:
    /// What this path lets through of \p rect.
    /// \param within if not null, the result is combined with it.
    /// \param regions the path's and, if there is a coverage within, those of that; for exact work.
    Kernel::Counted<const Coverage::ClipCoverage>
    GetCoverage(const Kernel::RectT<int>& rect, ClipWork& work, const Coverage::Regions& regions,
                const Coverage::ClipCoverage* within = nullptr) const;
    Kernel::Counted<const Coverage::ClipCoverage> Unite(const Kernel::RectT<int>& rect,
                                                        ClipWork& work) const;
    /// What the path encloses in the rows of \p rect.
    Kernel::Counted<const Coverage::Region> GetRegion(const Kernel::RectT<int>& rect,
                                                      ClipWork& work) const;
    void AddTo(Coverage::Region& region, const Kernel::RectT<int>& rect, ClipWork& work) const;

    Kernel::Counted<const Geometry::PolyPolygonType<double>> m_polygons;
    bool m_evenOdd = true;
    bool m_isGroup = false;
    /// The path when it is a rectangle on whole pixels, which needs no coverage; else unset.
    Kernel::RectT<int> m_wholePixels = Kernel::RectT<int>::MakeUnset();
    bool m_isUpright = false; // a rectangle or a few of them
    std::vector<ClipPath> m_members;
};

/// The clip paths in force. Coverage is made when it is first needed and kept per level, so that a
/// pop costs nothing and a push costs one path.
class ClipPathStack
{
public:
    void Push(ClipPath path);
    void Pop();
    /// Paths pushed between these two are united and count as one from EndGroup on.
    void BeginGroup();
    void EndGroup();

    /// Whether any path is in force; open groups do not count yet.
    bool IsEmpty() const noexcept { return m_levels[m_depth].paths.empty(); }

    /// Puts all present paths and open groups out of force, for the inside of a composite group,
    /// whose result they clip as a whole.
    void Seal();
    /// Brings back what the latest Seal put out of force; what was pushed since and not popped
    /// goes.
    void Unseal() noexcept;

    /// Seals a stack for as long as it lives.
    class Sealing
    {
    public:
        explicit Sealing(ClipPathStack& stack) : m_stack(stack) { stack.Seal(); }
        Sealing(const Sealing&) = delete;
        Sealing& operator=(const Sealing&) = delete;
        ~Sealing() { m_stack.Unseal(); }

    private:
        ClipPathStack& m_stack;
    };

    /// Whether there is nothing at all, in force or not.
    bool IsPlain() const noexcept
    {
        return m_depth == 0 && m_levels[0].paths.empty() && m_levels[0].openGroups.empty();
    }

    /// What all paths in force let through within \p rect.
    /// \param isExact whether the paths' common area counts rather than the product of their
    ///        coverages.
    const ClipState& Update(const Kernel::RectT<int>& rect, bool isExact = false);

    void Clear();

private:
    struct Level;

public:
    /// The paths of a stack, apart from its working memory.
    struct Saved
    {
        std::vector<Level> levels;
        std::size_t depth;
    };
    Saved Save() const { return {m_levels, m_depth}; }
    void Restore(Saved saved) noexcept
    {
        m_levels = std::move(saved.levels);
        m_depth = saved.depth;
    }

private:
    /// The paths between two composite groups.
    struct Level
    {
        std::vector<ClipPath> paths;
        std::vector<ClipPath> openGroups;
        std::vector<ClipState> states; ///< per path, the product with those before
        Kernel::RectT<int> rect{};     ///< what the states were made for
        bool isExact = false;          ///< and how

        void Clear() noexcept
        {
            paths.clear();
            openGroups.clear();
            states.clear();
        }
    };

    Level& GetLevel() noexcept { return m_levels[m_depth]; }

    /// Those of the composite groups around, the one in force, and empty ones kept for their
    /// memory.
    std::vector<Level> m_levels{1};
    std::size_t m_depth = 0; // the one in force
    ClipState m_everything;
    Coverage::CoverageStore m_store;
    Coverage::CommonArea m_area;
};

} // namespace Renderer
