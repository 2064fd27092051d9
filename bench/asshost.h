#pragma once

#include <ass/ass.h>

#include <cstdarg>
#include <stdexcept>
#include <string>

/** A script in libass with its renderer, for frames of one size. */
class AssHost
{
public:
    AssHost(int width, int height, const std::string &file) : m_library(ass_library_init())
    {
        ass_set_message_cb(
            m_library, [](int, const char *, va_list, void *) {}, nullptr);
        m_renderer = ass_renderer_init(m_library);
        ass_set_storage_size(m_renderer, width, height);
        ass_set_frame_size(m_renderer, width, height);
        ass_set_fonts(m_renderer, nullptr, "DejaVu Sans", ASS_FONTPROVIDER_AUTODETECT, nullptr, 1);
        Open(file);
        if (!m_track)
            throw std::runtime_error("libass refused the script");
    }
    ~AssHost()
    {
        Close();
        ass_renderer_done(m_renderer);
        ass_library_done(m_library);
    }
    AssHost(const AssHost &) = delete;
    AssHost &operator=(const AssHost &) = delete;

    // By value, since libass does not take a const char *.
    void Open(std::string file) // cppcheck-suppress passedByValue
    {
        Close();
        m_track = ass_read_file(m_library, file.data(), nullptr);
    }

    void Read(std::string script) // cppcheck-suppress passedByValue
    {
        Close();
        m_track = ass_read_memory(m_library, script.data(), script.size(), nullptr);
    }

    /** @param change  set to 0 if the list is the same as before */
    const ASS_Image *Images(long ms, int *change = nullptr)
    {
        return ass_render_frame(m_renderer, m_track, ms, change);
    }

private:
    void Close()
    {
        if (m_track)
            ass_free_track(m_track);
        m_track = nullptr;
    }

    ASS_Library *m_library;
    ASS_Renderer *m_renderer = nullptr;
    ASS_Track *m_track = nullptr;
};
