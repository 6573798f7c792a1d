#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <kernel/ClassProperties.h>
#include <kernel/DelayLoadHolder.h>
#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <kernel/SharedClassProperties.h>

/// Saved classes that use everything the platform offers.
namespace Samples {

using Kernel::Consolidated;
using Kernel::Counted;

struct Map
{
    std::array<double, 6> numbers;
};

class ShapeEnumSerialiser : public Kernel::EnumSerialiser
{
public:
    static const ShapeEnumSerialiser& GetInstance();

private:
    ShapeEnumSerialiser();
};

class SideFlagSerialiser : public Kernel::FlagSerialiser
{
public:
    static const SideFlagSerialiser& GetInstance();

private:
    SideFlagSerialiser();
};

/// A structure without identity.
struct Margin
{
    double width = 0;
    std::string note;

    Kernel::ClassUID GetClassUID() const { return "Marg"; }
    unsigned short GetSchemaVersion() const { return 1; }
    void Save(Kernel::OutSerialiser& out) const;
    bool Load(const Kernel::InSerialiser& in, Kernel::ClassUID uid, unsigned short version);
};

/// The members of a Sample; numbers compare by their bits.
struct Values
{
    double number = 0;
    bool flag = false;
    std::uint8_t byte = 0;
    std::int16_t small = 0;
    std::int32_t whole = 0;
    Kernel::String text;
    int shape = 0;
    std::uint32_t sides = 0;
    std::array<float, 3> raw = {};
    double limit = 0; // limit, cap and on are one property structure
    std::uint8_t cap = 0;
    bool on = false;
    std::vector<double> list;
    Map map = {{1, 0, 0, 0, 1, 0}};
    bool hasMargin = false;
    Margin margin;

    /// Everything as text, for comparing and hashing.
    std::string Describe() const;
};

/// A shared value.
class Sample : public Kernel::SharedSerialisable
{
public:
    static Consolidated<Sample> Create(const Values& values,
                                       std::vector<Consolidated<Sample>> children = {},
                                       Consolidated<Sample> next = nullptr,
                                       Kernel::DelayLoadHolder payload = {});

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    const Kernel::SharedClassProperties& GetObjectSharedClassProperties() const override;

    static Counted<Kernel::SharedSerialisable> CreateObject();
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Values values;
    std::vector<Consolidated<Sample>> children;
    Consolidated<Sample> next;
    Kernel::DelayLoadHolder payload;
    unsigned short loadedVersion = 0;

protected:
    bool CompareMembers(const SharedSerialisable& other) const override;
};

/// A plain object. It cannot be loaded without its name.
class Box : public Kernel::Serialisable
{
public:
    explicit Box(Kernel::String boxName = "box") : name(std::move(boxName)) {}

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    const Kernel::ClassProperties& GetObjectClassProperties() const override;

    static Counted<Kernel::Serialisable> CreateObject();
    static const Kernel::ClassProperties& GetTypeClassProperties();

    Kernel::String name;
    Counted<Box> inner;
    std::vector<Counted<Box>> parts;
    Consolidated<Sample> sample;
    Kernel::String cache; // written by full saves only
};

/// Six items of the commonest kinds.
class Point : public Kernel::SharedSerialisable
{
public:
    static Consolidated<Point> Create(double x, double y, double z);

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    const Kernel::SharedClassProperties& GetObjectSharedClassProperties() const override;

    static Counted<Kernel::SharedSerialisable> CreateObject();
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

protected:
    bool CompareMembers(const SharedSerialisable& other) const override;

private:
    double m_x = 0;
    double m_y = 0;
    double m_z = 0;
    std::int32_t m_layer = 0;
    bool m_visible = true;
    std::array<float, 4> m_colour = {};
};

/// Any number of points.
class Cloud : public Kernel::SharedSerialisable
{
public:
    static Consolidated<Cloud> Create(std::vector<Consolidated<Point>> points);

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    const Kernel::SharedClassProperties& GetObjectSharedClassProperties() const override;

    static Counted<Kernel::SharedSerialisable> CreateObject();
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    const std::vector<Consolidated<Point>>& GetPoints() const { return m_points; }

protected:
    bool CompareMembers(const SharedSerialisable& other) const override;

private:
    std::vector<Consolidated<Point>> m_points;
};

} // namespace Samples

template<>
struct Kernel::PropTypeOf<Samples::Map>
    : Kernel::PropTypeConstant<Kernel::PropType::AffineTransform>
{};
