#pragma once

#include "parsers/cueindex.h"
#include "parsers/duetexts.h"
#include "parsers/iparser.h"
#include "textio/exported.h"

#include <QList>
#include <array>

class FieldReader;

/** One dialogue event; times in milliseconds. */
struct SUBTITLE_EXPORT AssSubtitleItem {
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
 * SSA and ASS scripts. Only the text of events is returned; the script's resolution and the last style read are stored
 * but not used.
 *
 * Fields are read by position, Format lines are ignored, and keys are recognised in every section. A field that is not
 * a number reads as -1; missing fields repeat the last one.
 */
class AssParser : public IParser
{
public:
    /** Never fails: a file that cannot be read has no events. Style and resolution stay if the file sets none. */
    int Open(const QString &path, int track) override;
    QString GetSubtitle(long ms) override;
    QStringList AllDueTexts(long ms) override;

    /**
     * Takes the next field off a line, skipping leading spaces. Without a separator the field is the rest of the line,
     * which is not consumed.
     */
    QString GetStr(QString &line, char separator);
    /** The next field as a number, hexadecimal after "&h"; -1 if it is not a number. */
    int GetInt(QString &line, char separator);
    /** The next field as a number; -1.0 if it is not a number. */
    double GetFloat(QString &line, char separator);
    /** Removes override blocks and turns "\N" into line feeds. */
    QString RemoveSSATags(QString text);
    /** Does nothing; returns 1. */
    int ParseLinesToSubtitleItem();

private:
    friend class AssParserPeer; // gives tests access to the members

    /** Layout of event and style lines: 4 for v4.00 (SSA), 5 for v4.00+ (ASS), 3 until the script names one. */
    struct Versions {
        int nEventVersion = 3;
        int nStyleVersion = 3;
    };

    void ParseLine(const QString &line, Versions &versions);
    void ParseStyle(FieldReader &fields, int version);
    /** @return the alpha level, which only layouts 3 and 4 have; 0 for layout 5. */
    int ReadStyleFields(FieldReader &fields, int version);
    void ParseDialogue(FieldReader &fields, int version);
    /** The style name of an event, without leading '*'; any spelling of "default" becomes "Default". */
    QString StyleName(QStringView name) const;

    QList<AssSubtitleItem> m_listItems; ///< in file order
    QString m_strReserved;              ///< unused, always empty
    QString m_strCollisions;            ///< one character, 1 for reversed collisions and 0 for normal ones
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
    CueIndex m_index;
    DueTexts m_dueTexts;
};

/** The text without the occurrences of @p character at its start. */
QString TrimLeft(const QString &text, QChar character);
