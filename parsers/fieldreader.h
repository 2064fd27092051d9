#pragma once

#include <QString>
#include <QStringView>

/** Splits a script line into fields without copying. The line must outlive the reader and its fields. */
class FieldReader
{
public:
    explicit FieldReader(const QString &line) : m_line(line) {}

    /**
     * The next field, without leading spaces. Without a separator the field is the rest of the line, which is not
     * consumed.
     */
    QStringView Str(char separator);
    /** The next field as a number, hexadecimal after "&h"; -1 if it is not a number. */
    int Int(char separator);
    /** The next field as a number; -1.0 if it is not a number. */
    double Float(char separator);
    /** Reads h:mm:ss.cc and returns milliseconds, which wrap around at 32 bits. */
    int Time();

    /** The part of the line that is not consumed yet. */
    QStringView Rest() const { return QStringView(m_line).mid(m_nPosition); }

private:
    const QString &m_line;
    int m_nPosition = 0;
};
