#pragma once

#include <QString>
#include <QStringView>

/** Cuts a line of a script into its fields, without copies. The line must outlive the reader and its fields. */
class FieldReader
{
public:
    explicit FieldReader(const QString &line) : m_line(line) {}

    /**
     * The next field, without the spaces before it. Where the separator is missing, the field is the rest of the line,
     * which is not consumed.
     */
    QStringView Str(char separator);
    /** The next field as a number, hexadecimal behind "&h"; -1 where it is none. */
    int Int(char separator);
    /** The next field as a number; -1.0 where it is none. */
    double Float(char separator);
    /** h:mm:ss.cc in milliseconds; wraps round at 32 bits. */
    int Time();

    /** What is not consumed. */
    QStringView Rest() const { return QStringView(m_line).mid(m_nPosition); }

private:
    const QString &m_line;
    int m_nPosition = 0;
};
