#pragma once

#include "subtitletrack.h"

/** The index of a VobSub pair, read as the library reads it. */
class VobSubIndex
{
public:
    struct Language {
        int nTrack = 0; ///< the number behind "index:", which is what the library selects by
        std::string strLanguage;
        std::string strTitle;
        std::vector<Cue> listCues;
    };

    /** Whether a file goes by the name of one. */
    static bool IsIndex(const std::string &strFile);

    /** The file with the pictures, whose name the library makes of the index's. */
    static std::string PicturesOf(const std::string &strFile);

    /** Throws a Failure when the file cannot be read. */
    explicit VobSubIndex(const std::string &strFile);

    /** Those that can be selected, in the order of the file. */
    const std::vector<Language> &Languages() const { return m_listLanguages; }

    /** Why the library takes no subtitles from a track. */
    std::string ReasonAgainst(int nTrack) const;

private:
    void ReadLine(const std::string &strLine);
    void BeginLanguage(const std::string &strLine);
    void AddCue(const std::string &strLine);

    std::string m_strSize;
    bool m_bHeader = true;
    // False below the line of a language that cannot be selected.
    bool m_bSelectable = false;
    std::vector<Language> m_listLanguages;
};
