#pragma once

#include "commandline/options.h"

#include <CLI/CLI.hpp>

#include <map>

/** Reads the options of subtitles: those before the first --subtitles are for all, others for the one before them. */
class SubtitleArguments
{
public:
    // Add options to the application, which this object must outlive.
    void AddSource(CLI::App &app);
    void AddLook(CLI::App &app);

    /** At least one subtitle, without a file if none was given. Throws a Failure for wrong usage. */
    std::vector<Subtitle> Finish() const;

private:
    using Values = std::map<std::string, std::string>;

    /** Adds options of one group. */
    class Group;

    void Take(const std::string &strOption, const std::string &strValue);
    static Subtitle Parse(const Values &values);
    static Style ParseLook(const Values &values);

    // Values by option: first those for all, then those of each --subtitles.
    std::vector<Values> m_listGiven = std::vector<Values>(1);
    std::string m_strRepeated; ///< the first option that was given twice for a subtitle
};
