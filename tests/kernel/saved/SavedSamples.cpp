#include "SavedSamples.h"

#include <bit>

#include <kernel/FileStore.h>

namespace Samples {
namespace {

[[maybe_unused]] const auto& sampleRegistration = Sample::GetTypeSharedClassProperties();
[[maybe_unused]] const auto& boxRegistration = Box::GetTypeClassProperties();
[[maybe_unused]] const auto& pointRegistration = Point::GetTypeSharedClassProperties();
[[maybe_unused]] const auto& cloudRegistration = Cloud::GetTypeSharedClassProperties();

std::string Bits(double value)
{
    return std::to_string(std::bit_cast<std::uint64_t>(value)) + ' ';
}

} // namespace

ShapeEnumSerialiser::ShapeEnumSerialiser()
{
    constexpr Kernel::EnumEntry First[] = {{0, 0}, {2, 0}, {-1, 0}};
    constexpr Kernel::EnumEntry Second[] = {{0, 0}, {1, 0}, {2, 0}, {-1, 0}};
    RegisterEnumSet(First, std::size(First));
    RegisterEnumSet(Second, std::size(Second));
}

const ShapeEnumSerialiser& ShapeEnumSerialiser::GetInstance()
{
    static const ShapeEnumSerialiser instance;
    return instance;
}

SideFlagSerialiser::SideFlagSerialiser()
{
    constexpr unsigned Indices[] = {0, 1, 31};
    RegisterFlagIndices(Indices, std::size(Indices));
}

const SideFlagSerialiser& SideFlagSerialiser::GetInstance()
{
    static const SideFlagSerialiser instance;
    return instance;
}

void Margin::Save(Kernel::OutSerialiser& out) const
{
    out.SaveTypeI("widt", width);
    out.SaveType("note", Kernel::String(note));
}

bool Margin::Load(const Kernel::InSerialiser& in, Kernel::ClassUID uid, unsigned short version)
{
    if (uid != GetClassUID() || version != 1)
        return false;
    in.LoadTypeI("widt", width);
    Kernel::String loaded;
    in.LoadType("note", loaded);
    note = loaded.GetStdString();
    return true;
}

std::string Values::Describe() const
{
    std::string all = Bits(number) + std::to_string(flag) + std::to_string(byte) + ' ' +
                      std::to_string(small) + ' ' + std::to_string(whole) + ' ' +
                      text.GetStdString() + ' ' + std::to_string(shape) + ' ' +
                      std::to_string(sides) + ' ';
    for (const float value : raw)
        all += Bits(value);
    all += Bits(limit) + std::to_string(cap) + std::to_string(on);
    for (const double value : list)
        all += Bits(value);
    all += '|';
    for (const double value : map.numbers)
        all += Bits(value);
    return all + std::to_string(hasMargin) + Bits(margin.width) + margin.note;
}

Consolidated<Sample> Sample::Create(const Values& values,
                                    std::vector<Consolidated<Sample>> children,
                                    Consolidated<Sample> next, Kernel::DelayLoadHolder payload)
{
    const auto sample = Kernel::MakeCounted<Sample>();
    sample->values = values;
    sample->children = std::move(children);
    sample->next = std::move(next);
    sample->payload = std::move(payload);
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(sample);
}

void Sample::Save(Kernel::OutSerialiser& out) const
{
    out.SaveTypeI("numb", values.number);
    out.SaveType("flag", values.flag);
    out.SaveTypeI("byte", values.byte);
    out.SaveTypeI("smal", values.small);
    out.SaveTypeI("whol", values.whole);
    out.SaveType("text", values.text);
    out.SaveEnumI("shap", ShapeEnumSerialiser::GetInstance(), values.shape);
    out.SaveFlagsI("side", SideFlagSerialiser::GetInstance(), values.sides);
    out.SaveRawStructI("raw_", values.raw);
    out.SavePropStructI("prop", values.limit, values.cap, values.on);
    out.SaveTypeArrayI("list", values.list);
    out.SaveTypeI("map_", values.map);
    if (values.hasMargin)
        out.SavePropClassI("marg", values.margin);
    else
        out.SaveNullPropClassI("marg");
    out.SaveSharedObjectArrayI("chil", children);
    out.SaveSharedObject("next", next);
    out.SaveDelayLoadObject("load", payload);
}

bool Sample::Load(const Kernel::InSerialiser& in, Kernel::FileStore& store, unsigned short version)
{
    loadedVersion = version;
    // In another order than they were saved in.
    in.LoadDelayLoadObject("load", store, payload);
    in.LoadPropClassI("marg", [&](const Kernel::InSerialiser& items, Kernel::ClassUID uid,
                                  unsigned short marginVersion) {
        values.hasMargin = values.margin.Load(items, uid, marginVersion);
        return values.hasMargin;
    });
    in.LoadSharedObjectArrayI("chil", children);
    in.LoadSharedObjectI("next", next);
    in.LoadTypeI("numb", values.number);
    in.LoadType("flag", values.flag);
    in.LoadTypeI("byte", values.byte);
    in.LoadTypeI("smal", values.small);
    in.LoadTypeI("whol", values.whole);
    in.LoadType("text", values.text);
    in.LoadEnumI("shap", ShapeEnumSerialiser::GetInstance(), values.shape);
    in.LoadFlagsI("side", SideFlagSerialiser::GetInstance(), values.sides);
    in.LoadRawStructI("raw_", values.raw);
    in.LoadPropStructI("prop", values.limit, values.cap, values.on);
    in.LoadTypeArrayI("list", values.list);
    in.LoadTypeI("map_", values.map);
    return true;
}

void Sample::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    Kernel::AddToHash(hash, Kernel::String(values.Describe()));
}

bool Sample::CompareMembers(const SharedSerialisable& other) const
{
    const auto& sample = static_cast<const Sample&>(other);
    return values.Describe() == sample.values.Describe() && children == sample.children &&
           next == sample.next && payload == sample.payload;
}

const Kernel::SharedClassProperties& Sample::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("Smpl", &CreateObject, 3, nullptr, nullptr, "Sample");
    return record;
}

const Kernel::SharedClassProperties& Sample::GetObjectSharedClassProperties() const
{
    return GetTypeSharedClassProperties();
}

Counted<Kernel::SharedSerialisable> Sample::CreateObject()
{
    return Kernel::MakeCounted<Sample>();
}

void Box::Save(Kernel::OutSerialiser& out) const
{
    out.SaveType("name", name);
    out.SaveObject("innr", inner);
    out.SaveObjectArrayI("part", parts,
                         [](const Counted<Box>& part) -> const Box& { return *part; });
    out.SaveSharedObject("smpl", sample);
    if (out.IsFullSave())
        out.SaveType("cach", cache);
}

bool Box::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    in.LoadType("cach", cache);
    in.LoadObjectI("innr", inner);
    in.LoadObjectArrayI("part", parts);
    in.LoadSharedObjectI("smpl", sample);
    return in.LoadType("name", name);
}

const Kernel::ClassProperties& Box::GetTypeClassProperties()
{
    static const auto& record =
        *new Kernel::ClassProperties("Box_", &CreateObject, 1, nullptr, nullptr, "Box");
    return record;
}

const Kernel::ClassProperties& Box::GetObjectClassProperties() const
{
    return GetTypeClassProperties();
}

Counted<Kernel::Serialisable> Box::CreateObject()
{
    return Kernel::MakeCounted<Box>();
}

Consolidated<Point> Point::Create(double x, double y, double z)
{
    const auto point = Kernel::MakeCounted<Point>();
    point->m_x = x;
    point->m_y = y;
    point->m_z = z;
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(point);
}

void Point::Save(Kernel::OutSerialiser& out) const
{
    out.SaveTypeI("_x__", m_x);
    out.SaveTypeI("_y__", m_y);
    out.SaveTypeI("_z__", m_z);
    out.SaveTypeI("layr", m_layer);
    out.SaveType("visi", m_visible);
    out.SaveRawStructI("_col", m_colour);
}

bool Point::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    in.LoadTypeI("_x__", m_x);
    in.LoadTypeI("_y__", m_y);
    in.LoadTypeI("_z__", m_z);
    in.LoadTypeI("layr", m_layer);
    in.LoadType("visi", m_visible);
    in.LoadRawStructI("_col", m_colour);
    return true;
}

void Point::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_x);
    hash.Add(m_y);
    hash.Add(m_z);
    hash.Add(m_layer);
    hash.Add(m_visible);
    hash.AddToHash(m_colour.data(), sizeof m_colour);
}

bool Point::CompareMembers(const SharedSerialisable& other) const
{
    const auto& point = static_cast<const Point&>(other);
    return m_x == point.m_x && m_y == point.m_y && m_z == point.m_z && m_layer == point.m_layer &&
           m_visible == point.m_visible && m_colour == point.m_colour;
}

const Kernel::SharedClassProperties& Point::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("Poin", &CreateObject, 1, nullptr, nullptr, "Point");
    return record;
}

const Kernel::SharedClassProperties& Point::GetObjectSharedClassProperties() const
{
    return GetTypeSharedClassProperties();
}

Counted<Kernel::SharedSerialisable> Point::CreateObject()
{
    return Kernel::MakeCounted<Point>();
}

Consolidated<Cloud> Cloud::Create(std::vector<Consolidated<Point>> points)
{
    const auto cloud = Kernel::MakeCounted<Cloud>();
    cloud->m_points = std::move(points);
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(cloud);
}

void Cloud::Save(Kernel::OutSerialiser& out) const
{
    out.SaveSharedObjectArrayI("pnts", m_points);
}

bool Cloud::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    return in.LoadSharedObjectArrayI("pnts", m_points);
}

void Cloud::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const auto& point : m_points)
        hash.AddAddress(point.Get());
}

bool Cloud::CompareMembers(const SharedSerialisable& other) const
{
    return m_points == static_cast<const Cloud&>(other).m_points;
}

const Kernel::SharedClassProperties& Cloud::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("Clud", &CreateObject, 1, nullptr, nullptr, "Cloud");
    return record;
}

const Kernel::SharedClassProperties& Cloud::GetObjectSharedClassProperties() const
{
    return GetTypeSharedClassProperties();
}

Counted<Kernel::SharedSerialisable> Cloud::CreateObject()
{
    return Kernel::MakeCounted<Cloud>();
}

} // namespace Samples
