#pragma once

#include <vector>

namespace Renderer {

/// Applies a table of coverage gamma to spans and hands them to another writer.
template<class Writer>
class GammaSpanWriter
{
public:
    /// \param gamma 256 coverages, which leave 0 and 255 as they are; null for the identity.
    GammaSpanWriter(Writer& writer, const unsigned char* gamma) : m_writer(writer), m_gamma(gamma)
    {}

    void BeginRow(int y) { m_writer.BeginRow(y); }

    void Run(int x, unsigned length, unsigned char cover)
    {
        if (const unsigned char changed = m_gamma ? m_gamma[cover] : cover)
            m_writer.Run(x, length, changed);
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        if (m_gamma) {
            m_covers.resize(length);
            for (unsigned i = 0; i < length; ++i)
                m_covers[i] = m_gamma[covers[i]];
            covers = m_covers.data();
        }
        m_writer.Mask(x, length, covers);
    }

private:
    Writer& m_writer;
    const unsigned char* m_gamma;
    std::vector<unsigned char> m_covers;
};

} // namespace Renderer
