#pragma once

#include "subtitles/subtitletrack.h"

#include <optional>

/** The .idx file of a VobSub pair, read by the same rules as the library's. */
class VobSubIndex
{
public:
    struct Language {
        int nTrack = 0; ///< the number after "index:", by which the library selects
        std::string strLanguage;
        std::string strTitle;
        std::vector<Cue> listCues;
    };

    /** Whether a file's extension is .idx, in any case. */
    static bool IsIndex(const std::string &strFile);

    /** The name of the .sub file, derived from the index's as the library does. */
    static std::string PicturesOf(const std::string &strFile);

    /** Whether a line begins a language. */
    static bool IsLanguageLine(const std::string &strLine);

    /** The number of the language that a line begins; none if the library cannot select the language. */
    static std::optional<int> TrackOf(const std::string &strLine);

    /** Throws a Failure if the file cannot be read. */
    explicit VobSubIndex(const std::string &strFile);

    /** The languages that can be selected, in the order of the file. */
    const std::vector<Language> &Languages() const { return m_listLanguages; }

    /** Why the library refuses a track. */
    std::string ReasonAgainst(int nTrack) const;

private:
    void ReadLine(const std::string &strLine);
    void BeginLanguage(const std::string &strLine);
    void AddCue(const std::string &strLine);

    std::string m_strSize;
    bool m_bHeader = true;
    // Whether the current language can be selected.
    bool m_bSelectable = false;
    std::vector<Language> m_listLanguages;
};
