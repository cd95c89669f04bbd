#include "core/conversions.h"
#include "fuzzsupport.h"

#include <cstdint>

using namespace corvane;

namespace {

// A plain amount: digits, at most nine before the point.
bool isPlainAmount(const QString& s)
{
    qsizetype i = 0;
    qsizetype before = 0;
    while (i < s.size() && s.at(i).isDigit() && s.at(i).unicode() < 128)
        ++i, ++before;
    if (i < s.size() && s.at(i) == QLatin1Char('.'))
        ++i;
    while (i < s.size() && s.at(i).unicode() >= '0' && s.at(i).unicode() <= '9')
        ++i;
    return i == s.size() && before <= 9;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::quietContext();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString amount = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    int dropped = -1;
    const QString words = ConvertToWord(amount, &dropped);
    if (words.isEmpty() || dropped < 0)
        fuzz::fail("no words", amount);
    if (isPlainAmount(amount)) {
        if (dropped != 0)
            fuzz::fail("a group was dropped", amount);
        const bool ending = words == QLatin1String("Nil") || words.endsWith(QLatin1String(" Only"))
            || words.endsWith(QLatin1String(" Paisa"));
        if (!ending)
            fuzz::fail("odd ending", amount + QLatin1String(" -> ") + words);
        for (const QChar c : words)
            if (!(c.isLetter() || c == QLatin1Char(' ')))
                fuzz::fail("not a word", amount + QLatin1String(" -> ") + words);
    }
    return 0;
}
