#pragma once

#include <cstdint>
#include <vector>

/** Builds an MPEG-2 program stream packet by packet. */
class ProgramStream
{
public:
    using Bytes = std::vector<std::uint8_t>;

    ProgramStream &PackHeader(int nStuffing)
    {
        Start(0xBA);
        m_bytes.insert(m_bytes.end(), {0x44, 0, 4, 0, 4, 1, 1, 0x89, 0xC3});
        m_bytes.push_back(static_cast<std::uint8_t>(0xF8 | nStuffing));
        m_bytes.insert(m_bytes.end(), nStuffing, 0xFF);
        return *this;
    }

    /** A private stream 1 packet with @p nHeader bytes of PES header data. */
    ProgramStream &Private(int nSubStream, const Bytes &payload, int nHeader = 5)
    {
        Start(0xBD);
        Length(payload.size() + nHeader + 4);
        m_bytes.insert(m_bytes.end(), {0x81, 0x80});
        m_bytes.push_back(static_cast<std::uint8_t>(nHeader));
        m_bytes.insert(m_bytes.end(), nHeader, 0x21);
        m_bytes.push_back(static_cast<std::uint8_t>(nSubStream));
        return Raw(payload);
    }

    ProgramStream &Padding(std::size_t nLength)
    {
        Start(0xBE);
        Length(nLength);
        m_bytes.insert(m_bytes.end(), nLength, 0xFF);
        return *this;
    }

    /** A start code and nothing after it. */
    ProgramStream &Start(int nId)
    {
        m_bytes.insert(m_bytes.end(), {0, 0, 1, static_cast<std::uint8_t>(nId)});
        return *this;
    }

    ProgramStream &Raw(const Bytes &bytes)
    {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }

    const Bytes &Get() const { return m_bytes; }

private:
    void Length(std::size_t nLength)
    {
        m_bytes.push_back(static_cast<std::uint8_t>(nLength >> 8));
        m_bytes.push_back(static_cast<std::uint8_t>(nLength));
    }

    Bytes m_bytes;
};
