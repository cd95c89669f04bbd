#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QStringDecoder>
#include <QStringList>

namespace corvane::bankinfo {

// Reads comma-separated values one line at a time: values may be quoted
// ("" stands for a quote inside), a byte-order mark and Windows line ends
// are dropped, values are trimmed. Lines that are not valid UTF-8 are read
// as Latin-1. A record never spans lines.
class CsvReader {
public:
    explicit CsvReader(QIODevice& device) : device_(device) {}

    // Reads the next line; false at the end of the input.
    bool next();

    const QStringList& fields() const { return fields_; }
    // Whether the line held nothing but blanks.
    bool blank() const { return blank_; }
    // Whether a quoted value of the line was not closed.
    bool unclosedQuote() const { return unclosedQuote_; }
    // 1-based number of the line last read.
    int lineNumber() const { return line_; }
    qint64 bytesRead() const { return bytes_; }

    // The fields of one line (without its line end).
    static QStringList split(const QString& line, bool* unclosedQuote = nullptr);

private:
    QString decode(const QByteArray& bytes);

    QIODevice& device_;
    QStringDecoder utf8_{QStringDecoder::Utf8, QStringDecoder::Flag::Stateless};
    QStringList fields_;
    bool blank_ = false;
    bool unclosedQuote_ = false;
    int line_ = 0;
    qint64 bytes_ = 0;
};

} // namespace corvane::bankinfo
