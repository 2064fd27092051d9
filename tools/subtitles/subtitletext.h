#pragma once

#include "commandline/options.h"

#include <vector>

/** The text of a SubRip or ASS/SSA file in UTF-8, without markup unless the source says to keep it. */
class SubtitleText
{
public:
    struct TextCue {
        int64_t nStart = 0; ///< milliseconds
        int64_t nEnd = 0;
        // Why the library may not show it; null if no reason is known. A string literal.
        const char *pTrouble = nullptr;
    };

    /** Throws a Failure if the file cannot be read or is not valid in its encoding. */
    explicit SubtitleText(const SubtitleSource &source);

    /** The whole file, with a byte-order mark. */
    std::string Text() const;

    /** Whether markup was removed. */
    bool IsCleaned() const { return m_bCleaned; }

    /** Whether an encoding was given and conversion changed the bytes. */
    bool IsConverted() const { return m_bConverted; }

    /** The encoding if it was guessed, else empty. */
    const std::string &Guess() const { return m_strGuess; }

    /** All cues with a text, at the times that the library reads. */
    std::vector<TextCue> Cues() const;

private:
    void CleanSubRip();
    void CleanScript();
    std::vector<TextCue> ScriptCues() const;
    std::vector<TextCue> SubRipCues() const;

    bool m_bScript;
    bool m_bReturnsOnly = false;
    bool m_bCleaned = false;
    bool m_bConverted = false;
    std::string m_strGuess;
    std::vector<std::string> m_listLines;
};
