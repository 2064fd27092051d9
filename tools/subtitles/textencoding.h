#pragma once

#include <string>

/** Converts the text of subtitle files to UTF-8. */
class TextEncoding
{
public:
    /**
     * Throws a Failure for a name that iconv does not know.
     * @param strName  encoding of files without a byte-order mark; "auto" guesses, empty means the locale's.
     */
    explicit TextEncoding(const std::string &strName);

    /**
     * Converts the bytes of a file. A byte-order mark takes precedence over the encoding's name and is removed.
     * Throws a Failure if bytes are not valid in the encoding.
     * @param strFile  for errors.
     */
    std::string ToUtf8(const std::string &strBytes, const std::string &strFile);

    /** The encoding that was guessed, empty if none was. */
    const std::string &Guess() const { return m_strGuess; }

private:
    std::string m_strName;
    std::string m_strGuess;
};
