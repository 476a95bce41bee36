// SPDX-License-Identifier: MIT
#include "settings/ColorHex.h"

namespace velkor {

namespace {
int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}
} // namespace

std::optional<QColor> colorFromHex(QStringView text)
{
    QStringView digits = text.trimmed();
    if (digits.startsWith(u'#'))
        digits = digits.mid(1);
    if (digits.size() != 6)
        return std::nullopt;
    // Digit by digit: a number parser would accept signs, spaces or "0x".
    int rgb = 0;
    for (const QChar c : digits) {
        const int d = hexDigit(c);
        if (d < 0)
            return std::nullopt;
        rgb = rgb * 16 + d;
    }
    return QColor::fromRgb((rgb >> 16) & 0xff, (rgb >> 8) & 0xff, rgb & 0xff);
}

QString hexFromColor(const QColor& color)
{
    const QColor rgb = color.toRgb();
    return QStringLiteral("#%1%2%3")
        .arg(rgb.red(), 2, 16, QLatin1Char('0'))
        .arg(rgb.green(), 2, 16, QLatin1Char('0'))
        .arg(rgb.blue(), 2, 16, QLatin1Char('0'))
        .toUpper();
}

} // namespace velkor
