#pragma once

#include "parsers/cueindex.h"
#include "parsers/duetexts.h"
#include "parsers/iparser.h"

#include <QList>
#include <array>

class FieldReader;

/** One dialogue event; times in milliseconds. */
struct AssSubtitleItem {
    int nLayer = 0;
    int nStart = 0;
    int nEnd = 0;
    QString strText; ///< without override tags, lines joined by "\n"
    QString strStyle;
    QString strActor;
    QString strEffect;
    QRect rcMargin; ///< always null: the margins of an event are read and dropped
};

/**
 * SSA and ASS scripts. Only the events' text leaves the parser; the script's resolution and the style read last are kept
 * in it all the same.
 *
 * Fields are read by position, whatever format lines say, and keys are recognised in every section. Numbers that are
 * none read as -1, missing fields repeat the last one.
 */
class AssParser : public IParser
{
public:
    /** Never fails: a file that cannot be read has no events. Style and resolution stay where the file has none. */
    int Open(const QString &path, int track) override;
    QString GetSubtitle(long ms) override;
    QStringList AllDueTexts(long ms) override;

    /**
     * Cuts the next field off a line, without the spaces before it. Where the separator is missing, the field is the
     * rest of the line, which is not consumed.
     */
    QString GetStr(QString &line, char separator);
    /** The next field as a number, hexadecimal behind "&h"; -1 where it is none. */
    int GetInt(QString &line, char separator);
    /** The next field as a number; -1.0 where it is none. */
    double GetFloat(QString &line, char separator);
    /** Removes override blocks and turns "\N" into line feeds. */
    QString RemoveSSATags(QString text);
    /** Does nothing. */
    int ParseLinesToSubtitleItem();

private:
    friend class AssParserPeer; // through which tests look inside

    /** Which layout lines have: 3, 4 or 5. */
    struct Versions {
        int nEvent = 3;
        int nStyle = 3;
    };

    void ParseLine(const QString &line, Versions &versions);
    void ParseStyle(FieldReader &fields, int version);
    /** Returns the alpha level, which only older layouts have. */
    int ReadStyleFields(FieldReader &fields, int version);
    void ParseDialogue(FieldReader &fields, int version);
    /** An event's, without the stars before it. */
    QString StyleName(QStringView name) const;

    QList<AssSubtitleItem> m_listItems; ///< in file order
    CueIndex m_index;
    DueTexts m_dueTexts;
    QString m_strReserved;
    QString m_strCollisions; ///< one character, 1 for reversed collisions and 0 for normal ones
    int m_nPlayResX = 0;
    int m_nPlayResY = 0;
    QRect m_rcMargin;                     ///< top and bottom are both the vertical margin
    std::array<int, 4> m_nColors = {};    ///< primary, secondary, outline, back
    std::array<quint8, 4> m_byAlpha = {}; ///< transparency, in the same order
    QString m_strFontName;
    int m_nCharset = 0;
    int m_nBold = 0;
    int m_nAlignment = 0; ///< as on a numeric keypad
    int m_nBorderStyle = 0;
    double m_dFontSize = 0;
    double m_dScaleX = 0;
    double m_dScaleY = 0;
    double m_dSpacing = 0;
    double m_dAngleZ = 0;
    double m_dAngleX = 0;
    double m_dAngleY = 0;
    double m_dOutline = 0;
    double m_dShadow = 0;
    int m_bItalic = 0;
    int m_bUnderline = 0;
    int m_bStrikeOut = 0;
};

/** The text without its leading run of a character. */
QString TrimLeft(const QString &text, QChar character);
