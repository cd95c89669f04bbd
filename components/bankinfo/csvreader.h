#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QStringDecoder>
#include <QStringList>

namespace corvane::bankinfo {

// Reads comma-separated values one record at a time: values may be quoted
// ("" stands for a quote inside, and a quoted value may hold commas and line
// breaks, so that a record spans lines), a byte-order mark and Windows line
// ends are dropped, unquoted values are trimmed, quoted ones kept as they are.
// Records that are not valid UTF-8 are read as Latin-1. A quote left open
// ends its record after kMaxRecordBytes, so that one stray quote cannot
// swallow the rest of a file.
class CsvReader {
public:
    explicit CsvReader(QIODevice& device) : device_(device) {}

    static constexpr qint64 kMaxRecordBytes = 64 * 1024;

    // Reads the next record; false at the end of the input.
    bool next();

    const QStringList& fields() const { return fields_; }
    // Whether the line held nothing but blanks.
    bool blank() const { return blank_; }
    // Whether a quoted value of the line was not closed.
    bool unclosedQuote() const { return unclosedQuote_; }
    // 1-based number of the line last read, and of the first line of the record.
    int lineNumber() const { return line_; }
    int firstLine() const { return firstLine_; }
    qint64 bytesRead() const { return bytes_; }

    // The fields of one record (without its final line end).
    static QStringList split(const QString& line, bool* unclosedQuote = nullptr);

private:
    QString decode(QByteArrayView bytes);

    QIODevice& device_;
    QStringDecoder utf8_{QStringDecoder::Utf8, QStringDecoder::Flag::Stateless};
    QStringList fields_;
    bool blank_ = false;
    bool unclosedQuote_ = false;
    int line_ = 0;
    int firstLine_ = 0;
    qint64 bytes_ = 0;
};

} // namespace corvane::bankinfo
