#include "core/conversions.h"

#include "core/resumenext.h"
#include "core/textnumbers.h"

#include <cmath>

namespace corvane {

namespace {

// Index 0 to 3; a group beyond crore has no name and fails.
QString placeName(int group)
{
    static const QString names[] = {QString(), QStringLiteral(" Thousand "), QStringLiteral(" Lac "), QStringLiteral(" Crore ")};
    if (group < 0 || group > 3)
        throw Failure(err::SubscriptOutOfRange, kSource, QStringLiteral("Subscript out of range"));
    return names[group];
}

} // namespace

QString ConvertDigit(const QString& d)
{
    static const QString words[] = {QString(), QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three"),
                                    QStringLiteral("Four"), QStringLiteral("Five"), QStringLiteral("Six"),
                                    QStringLiteral("Seven"), QStringLiteral("Eight"), QStringLiteral("Nine")};
    const double value = valueOf(d);
    for (int i = 1; i <= 9; ++i)
        if (value == i)
            return words[i];
    return QString();
}

QString ConvertTens(const QString& t)
{
    static const QString teens[] = {QStringLiteral("Ten"), QStringLiteral("Eleven"), QStringLiteral("Twelve"),
                                    QStringLiteral("Thirteen"), QStringLiteral("Fourteen"), QStringLiteral("Fifteen"),
                                    QStringLiteral("Sixteen"), QStringLiteral("Seventeen"), QStringLiteral("Eighteen"),
                                    QStringLiteral("Nineteen")};
    static const QString tens[] = {QString(), QString(), QStringLiteral("Twenty"), QStringLiteral("Thirty"),
                                   QStringLiteral("Forty"), QStringLiteral("Fifty"), QStringLiteral("Sixty"),
                                   QStringLiteral("Seventy"), QStringLiteral("Eighty"), QStringLiteral("Ninety")};
    QString result;
    const double first = valueOf(t.left(1));
    if (first == 1) {
        const double value = valueOf(t);
        for (int i = 10; i <= 19; ++i)
            if (value == i)
                result = teens[i - 10];
    } else {
        for (int i = 2; i <= 9; ++i)
            if (first == i)
                result = tens[i];
        result += QLatin1Char(' ') + ConvertDigit(t.right(1));
    }
    return trimSpaces(result);
}

QString ConvertHundreds(const QString& h)
{
    if (std::floor(valueOf(h)) == 0)
        return QString();
    const QString digits = (QStringLiteral("000") + h).right(3);
    QString result;
    if (digits.at(0) != QLatin1Char('0'))
        result = ConvertDigit(digits.mid(0, 1)) + QStringLiteral(" Hundred ");
    if (digits.at(1) != QLatin1Char('0'))
        result += ConvertTens(digits.mid(1, 2));
    else
        result += ConvertDigit(digits.mid(2, 1));
    return trimSpaces(result);
}

QString ConvertToWord(const QString& myNumber, int* failedGroups)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("CONVERTTOWORD"));
    QString number = trimSpaces(myNumber);
    QString paisa;
    const qsizetype point = number.indexOf(QLatin1Char('.'));
    if (point >= 0) {
        // Two decimals are read; a third is dropped, not rounded.
        paisa = ConvertTens((number.mid(point + 1) + QStringLiteral("00")).left(2));
        number = trimSpaces(number.left(point));
    }

    // The last three digits are hundreds, then pairs: thousand, lac, crore (12,34,56,789).
    QString rupees;
    int group = 0;
    bool hundredsDone = false;
    while (!number.isEmpty()) {
        QString words;
        qsizetype taken = 0;
        if (!hundredsDone) {
            taken = qMin<qsizetype>(3, number.size());
            words = ConvertHundreds(number.right(taken));
            hundredsDone = true;
        } else {
            taken = number.size() > 1 ? 2 : 1;
            words = taken == 2 ? ConvertTens(number.right(2)) : ConvertDigit(number.right(1));
        }
        if (!words.isEmpty())
            guard([&] { rupees = trimSpaces(words + placeName(group) + rupees); });
        number.chop(taken);
        ++group;
    }
    if (failedGroups)
        *failedGroups = guard.failures();

    rupees = trimSpaces(rupees);
    if (!paisa.isEmpty())
        paisa += QStringLiteral(" Paisa");
    QString result;
    if (rupees.isEmpty())
        result = paisa.isEmpty() ? QStringLiteral("Nil") : paisa;
    else if (rupees == QStringLiteral("One"))
        // Only one rupee names the currency; the printed forms rely on it.
        result = QStringLiteral("One Rupee ") + (paisa.isEmpty() ? QString() : QStringLiteral("And ") + paisa + QLatin1Char(' '))
            + QStringLiteral("Only");
    else
        result = rupees + (paisa.isEmpty() ? QString() : QStringLiteral(" And ") + paisa) + QStringLiteral(" Only");
    return trimSpaces(result);
}

} // namespace corvane
