#pragma once

#include <string>

/** Brings the text of subtitle files to UTF-8. */
class TextEncoding
{
public:
    /**
     * Throws a Failure for a name that iconv does not know.
     * @param strName  of the encoding of files without a byte-order mark; "auto" guesses, empty is the locale's.
     */
    explicit TextEncoding(const std::string &strName);

    /**
     * Takes a byte-order mark off.
     * Throws a Failure where bytes are not of the encoding.
     * @param strFile  for errors.
     */
    std::string ToUtf8(const std::string &strBytes, const std::string &strFile);

    /** What the text was taken for by guessing, empty where nothing was guessed. */
    const std::string &Guess() const { return m_strGuess; }

private:
    std::string m_strName;
    std::string m_strGuess;
};
