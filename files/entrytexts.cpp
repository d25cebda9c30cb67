#include "files/entrytexts.h"

#include <cmath>
#include <ctime>
#include <limits>

namespace
{

constexpr double Kilobyte = 1024;
constexpr double Megabyte = 1024 * 1024;

QString number(double value)
{
    constexpr int SignificantDigits = 6;
    return QString::number(value, 'g', SignificantDigits);
}

double cutToHundredths(double value)
{
    return std::floor(value * 100) / 100;
}

} // namespace

QString sizeText(double bytes)
{
    if (bytes < Kilobyte)
        return number(bytes) + QStringLiteral(" b");
    if (bytes < Megabyte)
        return number(cutToHundredths(bytes / Kilobyte)) + QStringLiteral(" Kb");
    return number(cutToHundredths(bytes / Kilobyte / Kilobyte)) + QStringLiteral(" Mb");
}

QString wideSizeText(qint64 bytes)
{
    constexpr double Gigabyte = Megabyte * Kilobyte;
    constexpr double Terabyte = Gigabyte * Kilobyte;
    const auto size = double(bytes);
    if (size < Gigabyte)
        return sizeText(size);
    if (size < Terabyte)
        return number(cutToHundredths(size / Gigabyte)) + QStringLiteral(" Gb");
    return number(cutToHundredths(size / Terabyte)) + QStringLiteral(" Tb");
}

QString dateText(int day, int month, int year)
{
    QString text;
    if (day <= 9)
        text += QLatin1Char('0');
    text += QString::number(day) + QLatin1Char('/');
    if (month <= 9)
        text += QLatin1Char('0');
    return text + QString::number(month) + QLatin1Char('/') + QString::number(year);
}

QString dateText(qint64 seconds)
{
    const std::time_t time = seconds;
    std::tm local{};
    constexpr int FirstYear = 1900;
    if (localtime_r(&time, &local) == nullptr ||
        local.tm_year > std::numeric_limits<int>::max() - FirstYear)
        return {};
    return dateText(local.tm_mday, local.tm_mon + 1, local.tm_year + FirstYear);
}

QString extensionOf(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QStringLiteral("quarn_execute") : name.mid(dot + 1).toUpper();
}
