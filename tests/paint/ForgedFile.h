#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include <kernel/OutSerialiser.h>

#include "SavedPaintSamples.h"

namespace Renderer::SavedPaint {

/// Items by tag of an object that is written by hand, in the place of a class of the library.
class Forged : public Kernel::Serialisable
{
public:
    using Writer = std::function<void(Kernel::OutSerialiser&)>;
    Forged(const char* uid, unsigned short version, Writer writer)
        : m_uid(uid), m_version(version), m_writer(std::move(writer))
    {}
    Bytes GetFile() const
    {
        static const Kernel::ClassProperties& record =
            *new Kernel::ClassProperties("TFrg", nullptr, 1, nullptr, nullptr, "Forged");
        m_record = &record;
        Bytes bytes = SavedPaint::Save(Kernel::MakeCounted<Forged>(*this));
        // The identifier and the version are the first things in the object.
        const std::string own = std::string("dTFrg") + '\x01';
        const auto at = std::search(bytes.begin(), bytes.end(), own.begin(), own.end());
        std::copy(m_uid.begin(), m_uid.end(), at + 1);
        at[5] = static_cast<unsigned char>(m_version);
        return bytes;
    }
    void Save(Kernel::OutSerialiser& out) const override { m_writer(out); }
    const Kernel::ClassProperties& GetObjectClassProperties() const override { return *m_record; }

private:
    std::string m_uid;
    unsigned short m_version;
    Writer m_writer;
    static inline const Kernel::ClassProperties* m_record = nullptr;
};

template<class T>
auto LoadForged(const char* uid, unsigned short version, const Forged::Writer& writer)
{
    return Kernel::InSerialiserFile(Forged(uid, version, writer).GetFile()).ParseWithChecks<T>();
}
template<class T>
auto LoadForged(const char* uid, const Forged::Writer& writer)
{
    return LoadForged<T>(uid, 1, writer);
}

} // namespace Renderer::SavedPaint
