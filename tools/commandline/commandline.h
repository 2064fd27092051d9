#pragma once

#include "commandline/subtitlearguments.h"

#include <CLI/CLI.hpp>

/** Reads the program's arguments. */
class CommandLine
{
public:
    CommandLine();

    /** @return nullopt after --help and --version, which print to standard output. Throws a Failure for wrong usage. */
    std::optional<Options> Parse(int nArguments, const char *const *pArguments);

private:
    void AddFiles();
    void AddEncoding();
    void AddSound();
    void AddOutput();
    void AddParts();
    void Finish();
    void FinishEncoding();
    void FinishList();
    void ChooseMode();
    void CheckModes() const;
    bool LacksFile() const;
    void FinishFiles();

    SubtitleArguments m_subtitles;
    CLI::App m_app;
    Options m_options;
    std::vector<std::string> m_listSnapshots;
    std::optional<std::string> m_strCrf;
    std::optional<std::string> m_strBitrate;
    std::optional<std::string> m_strAudioCodec;
    std::string m_strInput;
    bool m_bOverwrite = false;
    bool m_bNoOverwrite = false;
    std::optional<std::string> m_strAudioBitrate;
    std::optional<std::string> m_strStart;
    std::optional<std::string> m_strDuration;
    std::optional<std::string> m_strPipe;
    std::optional<std::string> m_strList;
};
