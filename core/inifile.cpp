#include "core/inifile.h"

#include "core/failure.h"
#include "core/safefile.h"

#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <QDir>
#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>
#include <map>
#include <vector>

namespace corvane::IniFile {

namespace {

using Ini = CSimpleIniTempl<char, SI_NoCase<char>, SI_ConvertA<char>>;

constexpr long kFileAccessError = 75;
const QByteArray kBom("\xEF\xBB\xBF");

// Character classes of the reader, so that a write finds exactly the line a read finds.
bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool isNewLine(char c) { return c == '\r' || c == '\n'; }
bool isComment(char c) { return c == ';' || c == '#'; }

QByteArray trimmedBlanks(const QByteArray& s)
{
    qsizetype start = 0;
    qsizetype end = s.size();
    while (start < end && isSpace(s[start]))
        ++start;
    while (end > start && isSpace(s[end - 1]))
        --end;
    return s.mid(start, end - start);
}

char lower(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }

bool sameName(const QByteArray& a, const QByteArray& b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i]))
            return false;
    return true;
}

struct Entry {
    bool isSection = false;
    QByteArray section;          // the section's name, or the section a key belongs to
    QByteArray key;
    qsizetype valueStart = 0;    // the value without its surrounding blanks
    qsizetype valueEnd = 0;
    qsizetype lineEnd = 0;       // the end of the entry's last line, before its line break
};

// The text as the reader is given it: a line that opens a section without
// closing it becomes a comment, as the platform ignores such a line (the
// library would take it, and the lines after it, for a section of that name).
// Offsets stay the same.
QByteArray readable(const QByteArray& data)
{
    QByteArray text = data;
    qsizetype lineStart = data.startsWith(kBom) ? kBom.size() : 0;
    while (lineStart < text.size()) {
        qsizetype lineEnd = lineStart;
        while (lineEnd < text.size() && !isNewLine(text[lineEnd]))
            ++lineEnd;
        qsizetype first = lineStart;
        while (first < lineEnd && (text[first] == ' ' || text[first] == '\t'))
            ++first;
        if (first < lineEnd && text[first] == '['
            && std::find(text.cbegin() + first, text.cbegin() + lineEnd, ']') == text.cbegin() + lineEnd)
            text[first] = ';';
        lineStart = lineEnd + 1;
    }
    return text;
}

// The entries of INI text in file order, found by the reader's own rules
// (a NUL ends the text).
std::vector<Entry> tokenize(const QByteArray& text)
{
    std::vector<Entry> entries;
    const char* d = text.constData(); // NUL-terminated
    QByteArray section;
    qsizetype p = 0;
    while (d[p]) {
        while (d[p] && isSpace(d[p]))
            ++p;
        if (!d[p])
            break;
        if (isComment(d[p])) {
            while (d[p] && !isNewLine(d[p]))
                ++p;
            continue;
        }
        if (d[p] == '[') {
            ++p;
            while (d[p] && isSpace(d[p]))
                ++p;
            const qsizetype nameStart = p;
            while (d[p] && d[p] != ']' && !isNewLine(d[p]))
                ++p;
            if (d[p] != ']')
                continue;
            qsizetype trail = p;
            while (trail > nameStart && isSpace(d[trail - 1]))
                --trail;
            section = text.mid(nameStart, trail - nameStart);
            ++p;
            while (d[p] && !isNewLine(d[p]))
                ++p;
            Entry e;
            e.isSection = true;
            e.section = section;
            e.lineEnd = p;
            entries.push_back(e);
            continue;
        }
        const qsizetype keyStart = p;
        while (d[p] && d[p] != '=' && !isNewLine(d[p]))
            ++p;
        if (d[p] != '=')
            continue;
        if (p == keyStart) {
            while (d[p] && !isNewLine(d[p]))
                ++p;
            continue;
        }
        qsizetype trail = p;
        while (trail > keyStart && isSpace(d[trail - 1]))
            --trail;
        Entry e;
        e.section = section;
        e.key = text.mid(keyStart, trail - keyStart);
        ++p;
        while (d[p] && !isNewLine(d[p]) && isSpace(d[p]))
            ++p;
        e.valueStart = p;
        while (d[p] && !isNewLine(d[p]))
            ++p;
        e.lineEnd = p;
        trail = p;
        while (trail > e.valueStart && isSpace(d[trail - 1]))
            --trail;
        e.valueEnd = trail;
        if (d[p])
            p += (d[p] == '\r' && d[p + 1] == '\n') ? 2 : 1;
        entries.push_back(e);
    }
    return entries;
}

QByteArray lineBreakOf(const QByteArray& data)
{
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (data[i] == '\n')
            return "\n";
        if (data[i] == '\r')
            return (i + 1 < data.size() && data[i + 1] == '\n') ? QByteArray("\r\n") : QByteArray("\r");
    }
    return "\n";
}

QByteArray trimmedName(const QString& name)
{
    QByteArray bytes = name.toUtf8();
    qsizetype start = 0;
    qsizetype end = bytes.size();
    while (start < end && (bytes[start] == ' ' || bytes[start] == '\t'))
        ++start;
    while (end > start && (bytes[end - 1] == ' ' || bytes[end - 1] == '\t'))
        --end;
    return bytes.mid(start, end - start);
}

QString decode(const QByteArray& bytes)
{
    // Files written by the Windows installations are in the ANSI code page.
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

QByteArray unquoted(const QByteArray& value)
{
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        return value.mid(1, value.size() - 2);
    return value;
}

QByteArray readFile(const QString& file)
{
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        throw Failure(kFileAccessError, kSource, QStringLiteral("Cannot read %1: %2").arg(file, f.errorString()));
    return f.readAll();
}

bool load(Ini& ini, const QByteArray& data)
{
    const QByteArray text = readable(data);
    return ini.LoadData(text.constData(), size_t(text.size())) >= 0;
}

QByteArray lowered(const char* name)
{
    QByteArray s(name);
    for (char& c : s)
        c = lower(c);
    return s;
}

// Every value of every key, by section and key without regard to case, in file order.
using Snapshot = std::map<std::pair<QByteArray, QByteArray>, std::vector<QByteArray>>;

Snapshot snapshot(const QByteArray& data)
{
    Snapshot all;
    Ini ini(true, true, false);
    if (!load(ini, data))
        return all;
    Ini::TNamesDepend sections;
    ini.GetAllSections(sections);
    for (const auto& section : sections) {
        Ini::TNamesDepend keys;
        ini.GetAllKeys(section.pItem, keys);
        for (const auto& key : keys) {
            auto& values = all[{lowered(section.pItem), lowered(key.pItem)}];
            if (!values.empty())
                continue; // a key named twice is listed twice
            Ini::TNamesDepend found;
            ini.GetAllValues(section.pItem, key.pItem, found);
            found.sort(Ini::Entry::LoadOrder());
            for (const auto& v : found)
                values.emplace_back(v.pItem);
        }
    }
    return all;
}

} // namespace

std::optional<QByteArray> lookup(const QByteArray& data, const QByteArray& section, const QByteArray& key)
{
    Ini ini(true, true, false);
    if (!load(ini, data))
        return std::nullopt;
    Ini::TNamesDepend values;
    if (!ini.GetAllValues(section.constData(), key.constData(), values) || values.empty())
        return std::nullopt;
    values.sort(Ini::Entry::LoadOrder());
    return QByteArray(values.front().pItem);
}

QByteArray edit(const QByteArray& data, const QByteArray& section, const QByteArray& key, const QByteArray& value)
{
    if (data.contains('\0'))
        throw Failure(err::InvalidCall, kSource, QStringLiteral("The settings file holds binary data; it is left as it is"));
    const qsizetype base = data.startsWith(kBom) ? kBom.size() : 0;
    const QByteArray text = data.mid(base);
    const std::vector<Entry> entries = tokenize(readable(text));

    QByteArray result = data;
    const QByteArray lineBreak = lineBreakOf(data);
    const QByteArray line = key + '=' + value;

    // The first of duplicate keys is the one a read finds, also across repeated sections.
    const Entry* header = nullptr;
    bool done = false;
    for (const Entry& e : entries) {
        if (!sameName(e.section, section))
            continue;
        if (e.isSection) {
            if (!header)
                header = &e;
        } else if (sameName(e.key, key)) {
            result.replace(base + e.valueStart, e.valueEnd - e.valueStart, value);
            done = true;
            break;
        }
    }

    if (!done && header) {
        // After the last key of the section's first block, or right after its header.
        const Entry* anchor = header;
        for (const Entry* e = header + 1; e != entries.data() + entries.size() && !e->isSection; ++e)
            anchor = e;
        result.insert(base + anchor->lineEnd, lineBreak + line);
    } else if (!done) {
        if (!text.isEmpty() && !isNewLine(text.back()))
            result += lineBreak;
        result += '[' + section + ']' + lineBreak + line + lineBreak;
    }

    // What a read sees afterwards must differ in this one value only.
    Snapshot expected = snapshot(data);
    auto& values = expected[{lowered(section.constData()), lowered(key.constData())}];
    if (values.empty())
        values.push_back(trimmedBlanks(value));
    else
        values.front() = trimmedBlanks(value);
    if (snapshot(result) != expected)
        throw Failure(err::InvalidCall, kSource,
                      QStringLiteral("[%1] %2 cannot be stored without changing other settings of this file")
                          .arg(decode(section), decode(key)));
    return result;
}

QString writeProblem(const QString& section, const QString& key, const QString& value)
{
    auto hasBreak = [](const QString& s) {
        return s.contains(QLatin1Char('\r')) || s.contains(QLatin1Char('\n')) || s.contains(QChar(0));
    };
    const QString s = QString::fromUtf8(trimmedName(section));
    const QString k = QString::fromUtf8(trimmedName(key));
    if (s.isEmpty())
        return QStringLiteral("The section name is empty");
    if (hasBreak(section) || section.contains(QLatin1Char(']')))
        return QStringLiteral("A section name cannot hold ], a line break or a NUL character");
    if (k.isEmpty())
        return QStringLiteral("The key is empty");
    if (hasBreak(key) || key.contains(QLatin1Char('=')) || k.startsWith(QLatin1Char('[')) || isComment(k.at(0).toLatin1()))
        return QStringLiteral("A key cannot hold =, a line break or a NUL character, nor begin with [, ; or #");
    if (hasBreak(value))
        return QStringLiteral("A value cannot hold a line break or a NUL character");
    return QString();
}

QString readProblem(const QString& file)
{
    const QFileInfo info(file);
    if (!info.exists() && !info.isSymLink())
        return QString();
    if (info.isDir())
        return QStringLiteral("Cannot read %1: it is a folder").arg(file);
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return QStringLiteral("Cannot read %1: %2").arg(file, f.errorString());
    return QString();
}

QString read(const QString& file, const QString& section, const QString& key, const QString& defVal)
{
    if (!QFileInfo(file).isFile())
        return defVal;
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return defVal;
    const auto value = lookup(f.readAll(), trimmedName(section), trimmedName(key));
    return value ? decode(unquoted(*value)) : defVal;
}

void write(const QString& file, const QString& section, const QString& key, const QString& value)
{
    const QString problem = writeProblem(section, key, value);
    if (!problem.isEmpty())
        throw Failure(err::InvalidCall, kSource, problem);

    const QFileInfo info(file);
    QByteArray data;
    if (info.exists()) {
        if (!info.isFile())
            throw Failure(kFileAccessError, kSource, QStringLiteral("%1 is not a file").arg(file));
        data = readFile(file);
    }
    const QByteArray updated = edit(data, trimmedName(section), trimmedName(key), value.toUtf8());
    if (info.exists() && updated == data)
        return;

    if (!QDir().mkpath(info.absolutePath()))
        throw Failure(err::PathNotFound, kSource, QStringLiteral("Cannot create the folder %1").arg(info.absolutePath()));
    replaceFile(file, updated);
}

} // namespace corvane::IniFile
