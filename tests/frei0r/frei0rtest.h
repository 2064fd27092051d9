#pragma once

#include "support/temporaryfolder.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>

extern "C" {
#include <frei0r.h>
}

/** The functions of the plugin, loaded as hosts load it. */
class Plugin
{
public:
    Plugin();
    ~Plugin();
    Plugin(const Plugin &) = delete;
    Plugin &operator=(const Plugin &) = delete;

    template <typename T>
    T *Function(const char *pName) const
    {
        return reinterpret_cast<T *>(Symbol(pName));
    }

private:
    void *Symbol(const char *pName) const;

    void *m_pLibrary;
};

#define PLUGIN_CALL(plugin, name) ((plugin).Function<decltype(name)>(#name))

/** An instance of the plugin; its parameters are accessed by name. */
class Instance
{
public:
    Instance(const Plugin &plugin, unsigned nWidth, unsigned nHeight);
    ~Instance();
    Instance(const Instance &) = delete;
    Instance &operator=(const Instance &) = delete;

    bool IsMade() const { return m_pInstance != nullptr; }
    void SetText(const char *pName, const std::string &strValue) const;
    void SetNumber(const char *pName, double fValue) const;
    void SetColor(const char *pName, float fRed, float fGreen, float fBlue) const;
    std::string Text(const char *pName) const;
    double Number(const char *pName) const;
    f0r_param_color_t Color(const char *pName) const;

    /** The plugin's output for a frame. */
    std::string Update(const std::string &strFrame, double fTime) const;
    void Update(double fTime, const void *pIn, void *pOut) const;

    void Set(int nParameter, void *pValue) const;
    void Get(int nParameter, void *pValue) const;

private:
    int Find(const char *pName, int nType) const;

    const Plugin &m_plugin;
    f0r_instance_t m_pInstance;
};

/**
 * The subtitle file has one subtitle from 0.4 to 0.8 seconds and another from 1.2 to 1.4, ends included. The width is a
 * multiple of 16, which FFmpeg's frei0r filter needs.
 */
class Frei0rTest : public testing::Test
{
protected:
    static constexpr int Width = 336;
    static constexpr int Height = 184;
    static constexpr std::size_t FrameBytes = std::size_t{4} * Width * Height;

    using Calls = std::function<void(void *)>;

    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }
    static bool IsDue(long nMilliseconds)
    {
        return (nMilliseconds >= 400 && nMilliseconds <= 800) || (nMilliseconds >= 1200 && nMilliseconds <= 1400);
    }

    /** An RGBA frame, different for each number, without the colours of text and outline. */
    static std::string Frame(int nNumber = 0, bool bOpaque = false);

    TemporaryFolder m_folder;
    std::string m_strSubtitles = m_folder.Write("text.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n"
                                                            "2\n00:00:01,200 --> 00:00:01,400\nTwo\nlines\n\n");
    Plugin m_plugin;
};
