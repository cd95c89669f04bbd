#include "core/conversions.h"
#include "fuzzsupport.h"

using namespace corvane;

namespace {

bool capital(QChar c) { return c.unicode() >= 'A' && c.unicode() <= 'Z'; }
bool digit(QChar c) { return c.unicode() >= '0' && c.unicode() <= '9'; }

// The form of a PAN written out once more, as a reference.
bool expected(const QString& s)
{
    if (s.isEmpty())
        return true;
    if (s.size() != 10)
        return false;
    bool allCapitals = true;
    bool form = true;
    for (int i = 0; i < 10; ++i) {
        allCapitals = allCapitals && capital(s.at(i));
        form = form && ((i >= 5 && i <= 8) ? digit(s.at(i)) : capital(s.at(i)));
    }
    return allCapitals || form;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::quietContext();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString pan = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    if (ValidPan(pan) != expected(pan))
        fuzz::fail("PAN test disagrees", pan);
    return 0;
}
