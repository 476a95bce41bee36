// SPDX-License-Identifier: MIT
#include "platform/x11/X11WindowIcon.h"

#include <QtTest>
#include <vector>

using namespace velkor::x11;

namespace {

// Appends one frame of a single colour to a _NET_WM_ICON value.
void addFrame(std::vector<quint32>& data, quint32 width, quint32 height, QRgb argb)
{
    data.push_back(width);
    data.push_back(height);
    data.insert(data.end(), size_t(width) * height, argb);
}

QList<int> sidesOf(const QIcon& icon)
{
    QList<int> sides;
    for (const QSize& size : icon.availableSizes())
        sides.append(size.width());
    std::sort(sides.begin(), sides.end());
    return sides;
}

QRgb centreOf(const QIcon& icon, int side)
{
    const QImage image = icon.pixmap(side, side).toImage();
    return image.pixel(image.width() / 2, image.height() / 2);
}

} // namespace

class X11WindowIconTest : public QObject
{
    Q_OBJECT
private slots:
    void framesBecomePixmapsWithTheirColours()
    {
        // A non-square frame, with translucent pixels: rows and alpha survive.
        std::vector<quint32> data;
        data.push_back(48);
        data.push_back(44);
        for (quint32 y = 0; y < 44; ++y)
            data.insert(data.end(), 48, y < 22 ? 0xFFFF0000u : 0x800000FFu);
        const QIcon icon = iconFromNetWmIcon(data.data(), data.size());
        QCOMPARE(icon.availableSizes(), (QList<QSize>{QSize(48, 44)}));
        const QImage image =
            icon.pixmap(QSize(48, 44)).toImage().convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(image.pixel(10, 5), 0xFFFF0000u);
        QCOMPARE(image.pixel(47, 43), 0x800000FFu);
    }

    void keepsTheSizesThatSuitTheOverlayElseTheNearest()
    {
        std::vector<quint32> data;
        addFrame(data, 16, 16, 0xFF000001);
        addFrame(data, 48, 48, 0xFF00FF00);
        addFrame(data, 64, 64, 0xFF0000FF);
        addFrame(data, 128, 128, 0xFFFF0000);
        QIcon icon = iconFromNetWmIcon(data.data(), data.size());
        QCOMPARE(sidesOf(icon), (QList<int>{48, 64}));
        QCOMPARE(centreOf(icon, 48), 0xFF00FF00u);
        QCOMPARE(centreOf(icon, 64), 0xFF0000FFu);

        // Only small and large frames: the smallest of the large ones.
        data.clear();
        addFrame(data, 16, 16, 0xFF000001);
        addFrame(data, 256, 256, 0xFF00FF00);
        addFrame(data, 128, 128, 0xFF0000FF);
        icon = iconFromNetWmIcon(data.data(), data.size());
        QCOMPARE(sidesOf(icon), QList<int>{128});

        // Only small frames: the largest.
        data.clear();
        addFrame(data, 24, 24, 0xFF000001);
        addFrame(data, 32, 32, 0xFF0000FF);
        addFrame(data, 16, 16, 0xFF00FF00);
        icon = iconFromNetWmIcon(data.data(), data.size());
        QCOMPARE(sidesOf(icon), QList<int>{32});
        QCOMPARE(centreOf(icon, 32), 0xFF0000FFu);
    }

    void malformedDataIsNeverReadPastItsEnd()
    {
        QVERIFY(iconFromNetWmIcon(nullptr, 0).isNull());
        const quint32 lone = 48;
        QVERIFY(iconFromNetWmIcon(&lone, 1).isNull());

        // Whole frames before a truncated one are kept; the sanitizers check
        // that the truncated one is not read.
        std::vector<quint32> data;
        addFrame(data, 48, 48, 0xFF00FF00);
        addFrame(data, 64, 64, 0xFF0000FF);
        data.resize(data.size() - 1);
        QIcon icon = iconFromNetWmIcon(data.data(), data.size());
        QCOMPARE(sidesOf(icon), QList<int>{48});

        // Sizes whose product wraps to zero in 32 bits end the reading; a
        // reader that took them for an empty frame would go on to the 64.
        // A truly empty frame is skipped.
        for (const quint32 width : {0x10000u, 0x80000000u}) {
            data.clear();
            addFrame(data, 0, 0, 0);
            addFrame(data, 48, 48, 0xFF00FF00);
            data.push_back(width);
            data.push_back(0x10000);
            addFrame(data, 64, 64, 0xFF0000FF);
            icon = iconFromNetWmIcon(data.data(), data.size());
            QCOMPARE(sidesOf(icon), QList<int>{48});
        }

        // Nothing whole at all.
        data = {64, 64, 1, 2, 3};
        QVERIFY(iconFromNetWmIcon(data.data(), data.size()).isNull());
    }
};

QTEST_MAIN(X11WindowIconTest)
#include "X11WindowIconTest.moc"
