#pragma once

#include "options.h"

#include <vector>

/** The text of a SubRip file or a script, in UTF-8 and without markup. */
class SubtitleText
{
public:
    struct TextCue {
        int64_t nStart = 0; ///< milliseconds
        int64_t nEnd = 0;
        // Why the library would not show it, as far as it can be seen.
        const char *pTrouble = nullptr;
    };

    /** Throws a Failure where the file cannot be read, or is not of the encoding. */
    explicit SubtitleText(const SubtitleSource &source);

    /** With a byte-order mark. */
    std::string Text() const;

    /** Whether markup was left out. */
    bool IsCleaned() const { return m_bCleaned; }

    /** Whether the library would read other characters from the file itself. */
    bool IsConverted() const { return m_bConverted; }

    /** The encoding where it was guessed. */
    const std::string &Guess() const { return m_strGuess; }

    /** All that look like cues to a reader who is less strict than the library's. */
    std::vector<TextCue> Cues() const;

private:
    void CleanSubRip();
    void CleanScript();

    bool m_bScript;
    bool m_bReturnsOnly = false;
    bool m_bCleaned = false;
    bool m_bConverted = false;
    std::string m_strGuess;
    std::vector<std::string> m_listLines;
};
