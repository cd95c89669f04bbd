#include "core/conversions.h"
#include "fuzzsupport.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace corvane;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::quietContext();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    modbase().TYear = input.ConsumeIntegral<qint16>();
    QString yr = QString::fromStdString(input.ConsumeRandomLengthString(12));
    const QString format = input.ConsumeBool() ? QStringLiteral("dd/MM/yyyy")
                                               : QString::fromStdString(input.ConsumeRandomLengthString(24));
    const QString dt = QString::fromStdString(input.ConsumeRemainingBytesAsString());

    const QString result = ConvertDate(dt, format, yr);
    if (!result.isEmpty() && !isDayFirstDate(result, 2010))
        fuzz::fail("a result that is no date", dt + QLatin1String(" -> ") + result);
    if (format == QLatin1String("dd/MM/yyyy") && !result.isEmpty() && result.size() != 10)
        fuzz::fail("not dd/MM/yyyy", dt + QLatin1String(" -> ") + result);
    return 0;
}
