#include "core/failure.h"
#include "core/inifile.h"
#include "fuzzsupport.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace corvane;

namespace {

QByteArray pick(FuzzedDataProvider& input, std::initializer_list<const char*> usual)
{
    const size_t choice = input.ConsumeIntegralInRange<size_t>(0, usual.size());
    if (choice < usual.size())
        return QByteArray(*(usual.begin() + choice));
    return QByteArray::fromStdString(input.ConsumeRandomLengthString(12));
}

QByteArray trimmed(const QByteArray& s)
{
    qsizetype b = 0;
    qsizetype e = s.size();
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (b < e && blank(s[b]))
        ++b;
    while (e > b && blank(s[e - 1]))
        --e;
    return s.mid(b, e - b);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::quietContext();
    return 0;
}

// Reads never fail; a write either stores exactly the value asked for
// (and, done again, changes nothing) or is refused with a Failure.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const QByteArray section = pick(input, {"A", "a", "MySql", "Settings"});
    const QByteArray key = pick(input, {"k", "K", "Server", "FontName"});
    const QByteArray value = QByteArray::fromStdString(input.ConsumeRandomLengthString(24));
    const QByteArray contents = QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());

    (void)IniFile::lookup(contents, section, key);
    if (!IniFile::writeProblem(QString::fromUtf8(section), QString::fromUtf8(key), QString::fromUtf8(value)).isEmpty())
        return 0;
    QByteArray edited;
    try {
        edited = IniFile::edit(contents, section, key, value);
    } catch (const Failure&) {
        return 0;
    }
    const auto stored = IniFile::lookup(edited, section, key);
    if (!stored || *stored != trimmed(value))
        fuzz::fail("the value written is not read back", QString::fromUtf8(contents.toPercentEncoding()));
    if (value == trimmed(value) && IniFile::edit(edited, section, key, value) != edited)
        fuzz::fail("writing the same value again changed the file", QString::fromUtf8(contents.toPercentEncoding()));
    return 0;
}
