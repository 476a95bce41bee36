// SPDX-License-Identifier: MIT
#include "overlay/OverlayFonts.h"

#include <QFontDatabase>
#include <QLoggingCategory>
#include <QStringList>

Q_LOGGING_CATEGORY(lcOverlayFonts, "velkor.overlay.fonts")

namespace velkor::OverlayFonts {

namespace {

// Debian's fonts-league-spartan; loaded by hand when fontconfig does not
// list it (a sandboxed or minimal font setup).
const QStringList LeagueSpartanFiles = {
    QStringLiteral("/usr/share/fonts/opentype/league-spartan/LeagueSpartan-Bold.otf"),
    QStringLiteral("/usr/local/share/fonts/LeagueSpartan-Bold.otf"),
};

QString resolveTitleFamily()
{
    for (const QString& family : {QStringLiteral("Futura"), QStringLiteral("League Spartan")}) {
        if (QFontDatabase::hasFamily(family))
            return family;
    }
    for (const QString& file : LeagueSpartanFiles) {
        const int id = QFontDatabase::addApplicationFont(file);
        if (id < 0)
            continue;
        const QStringList families = QFontDatabase::applicationFontFamilies(id);
        if (!families.isEmpty())
            return families.first();
    }
    qCWarning(lcOverlayFonts) << "neither Futura nor League Spartan found; using the default face";
    return {};
}

} // namespace

QString titleFamily()
{
    static const QString family = resolveTitleFamily();
    return family;
}

QFont title(int pixelSize)
{
    QFont font;
    const QString family = titleFamily();
    if (!family.isEmpty())
        font.setFamily(family);
    font.setPixelSize(pixelSize);
    font.setWeight(QFont::Bold);
    return font;
}

QFont system(int pixelSize, QFont::Weight weight)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

QFont monospaced(int pixelSize)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(pixelSize);
    font.setWeight(QFont::DemiBold);
    return font;
}

} // namespace velkor::OverlayFonts
