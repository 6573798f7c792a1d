#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>

/// A saved class lists its items once, and the list serves Save and Load alike:
///
///     template<class Self, class Items>
///     void Dot::ListItems(Self& self, Items&& items)
///     {
///         items.Optional("size", self.m_size, 1.0);
///         items.Required("colr", self.m_colour);
///     }
///
///     void Dot::Save(OutSerialiser& out) const { ListItems(*this, SavedItems::Writer(out)); }
///     bool Dot::Load(const InSerialiser& in, FileStore&, unsigned short)
///     {
///         SavedItems::Reader items(in);
///         ListItems(*this, items);
///         return items.IsComplete();
///     }
namespace Kernel::SavedItems {

/// Parameters set by the user count as their default up to this distance from it.
constexpr double Tolerance = 1e-6;

/// Whether two numbers are the same: equal, or not-a-number with the same bits. So every value
/// equals its copy, without which consolidation would keep each copy.
inline bool AreSame(double a, double b) noexcept
{
    return a == b || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}
inline bool AreSame(float a, float b) noexcept
{
    return a == b || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

/// Whether two parameters count as equal.
inline bool AreClose(double a, double b) noexcept
{
    return AreSame(a, b) || std::abs(a - b) <= Tolerance;
}

/// Whether a parameter counts as its default.
inline bool IsDefault(double value, double standard) noexcept
{
    return AreClose(value, standard);
}
inline bool IsDefault(bool value, bool standard) noexcept
{
    return value == standard;
}
inline bool IsDefault(const String& value, const String& standard) noexcept
{
    return value == standard;
}

/// Writes the items of a list.
class Writer
{
public:
    explicit Writer(OutSerialiser& out) noexcept : m_out(out) {}

    /// Written always.
    void Always(IDTag tag, double value) { m_out.SaveTypeI(tag, value); }
    void Always(IDTag tag, bool value) { m_out.SaveType(tag, value); }
    /// Written unless it counts as its default.
    template<class T>
    void Optional(IDTag tag, const T& value, const std::type_identity_t<T>& standard)
    {
        if (!IsDefault(value, standard))
            Put(tag, value);
    }
    /// A structure without padding, as its bytes.
    template<class T>
    void Raw(IDTag tag, const T& value)
    {
        m_out.SaveRawStructI(tag, value);
    }
    /// Written always; a value that is not legal is left out.
    template<class T>
    void Enum(IDTag tag, const EnumSerialiser& serialiser, T value)
    {
        m_out.SaveEnumI(tag, serialiser, static_cast<int>(value));
    }
    /// Written unless it is the default.
    template<class T>
    void OptionalEnum(IDTag tag, const EnumSerialiser& serialiser, T value, T standard)
    {
        if (value != standard)
            Enum(tag, serialiser, value);
    }
    /// A shared object without which the holder cannot exist.
    template<class T>
    void Required(IDTag tag, const Consolidated<T>& object)
    {
        m_out.SaveSharedObject(tag, object);
    }
    /// A shared object, written only when there is one.
    template<class T>
    void OptionalObject(IDTag tag, const Consolidated<T>& object)
    {
        if (object)
            m_out.SaveSharedObject(tag, object);
    }
    /// A plain object, written only when there is one.
    template<class T>
    void OptionalObject(IDTag tag, const Counted<T>& object)
    {
        if (object)
            m_out.SaveObject(tag, object);
    }
    /// Shared objects in order.
    template<class T>
    void Objects(IDTag tag, const std::vector<Consolidated<T>>& objects)
    {
        m_out.SaveSharedObjectArrayI(tag, objects);
    }
    /// Pairs of doubles in order, as one array.
    template<class Point>
    void Pairs(IDTag tag, const std::vector<Point>& points)
    {
        std::vector<double> values;
        values.reserve(2 * points.size());
        for (const Point& point : points) {
            values.push_back(point.x);
            values.push_back(point.y);
        }
        m_out.SaveTypeArrayI(tag, values);
    }

private:
    void Put(IDTag tag, double value) { m_out.SaveTypeI(tag, value); }
    void Put(IDTag tag, bool value) { m_out.SaveType(tag, value); }
    void Put(IDTag tag, const String& value) { m_out.SaveType(tag, value); }

    OutSerialiser& m_out;
};

/// Reads the items of a list. What is absent takes its default, or stays as it is without one.
class Reader
{
public:
    explicit Reader(const InSerialiser& in) noexcept : m_in(in) {}

    /// Whether every required object is there.
    bool IsComplete() const noexcept { return m_isComplete; }

    void Always(IDTag tag, double& value) { m_in.LoadTypeI(tag, value); }
    void Always(IDTag tag, bool& value) { m_in.LoadType(tag, value); }
    void Optional(IDTag tag, double& value, double standard)
    {
        if (!m_in.LoadTypeI(tag, value))
            value = standard;
    }
    template<class T>
    void Optional(IDTag tag, T& value, const std::type_identity_t<T>& standard)
    {
        if (!m_in.LoadType(tag, value))
            value = standard;
    }
    template<class T>
    void Raw(IDTag tag, T& value)
    {
        m_in.LoadRawStructI(tag, value);
    }
    template<class T>
    void Enum(IDTag tag, const EnumSerialiser& serialiser, T& value)
    {
        m_in.LoadEnumI(tag, serialiser, value);
    }
    template<class T>
    void OptionalEnum(IDTag tag, const EnumSerialiser& serialiser, T& value, T standard)
    {
        if (!m_in.LoadEnumI(tag, serialiser, value))
            value = standard;
    }
    template<class T>
    void Required(IDTag tag, Consolidated<T>& object)
    {
        Consolidated<T> found;
        if (m_in.LoadSharedObjectI(tag, found) && found)
            object = std::move(found);
        else
            m_isComplete = false;
    }
    template<class T>
    void OptionalObject(IDTag tag, Consolidated<T>& object)
    {
        if (!m_in.LoadSharedObjectI(tag, object))
            object = {};
    }
    template<class T>
    void OptionalObject(IDTag tag, Counted<const T>& object)
    {
        Counted<T> found;
        m_in.LoadObjectI(tag, found);
        object = std::move(found);
    }
    /// Damaged ones are left out.
    template<class T>
    void Objects(IDTag tag, std::vector<Consolidated<T>>& objects)
    {
        if (!m_in.LoadSharedObjectsI(tag, objects))
            objects.clear();
    }
    /// An odd number of values counts as absent.
    template<class Point>
    void Pairs(IDTag tag, std::vector<Point>& points)
    {
        points.clear();
        std::vector<double> values;
        if (!m_in.LoadTypeArrayI(tag, values) || values.size() % 2 != 0)
            return;
        points.reserve(values.size() / 2);
        for (std::size_t i = 0; i < values.size(); i += 2)
            points.push_back({values[i], values[i + 1]});
    }

private:
    const InSerialiser& m_in;
    bool m_isComplete = true;
};

} // namespace Kernel::SavedItems
