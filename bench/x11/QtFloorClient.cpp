// SPDX-License-Identifier: MIT
//
// velkor-qt-floor: the least a Qt Widgets program with a tray icon and an
// overlay does, as the memory baseline for velkor-x11-bench's soak. It docks
// an icon in the tray, then shows a frameless, unfocused window above the
// others N times, each time drawing a rounded panel, an icon from the icon
// theme and a few lines of text (changed three times, as a typed search
// does), and hides it again. No settings, no app index, no key handling: what
// it keeps resident is what Qt's libraries, fonts and painting cost any
// such program on this desk.
//
// Usage: velkor-qt-floor SHOWINGS (the display from DISPLAY). Prints "idle"
// once started and settled, and "done" after the last showing; then waits
// to be ended.

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPainterPath>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>
#include <cstdio>

namespace {

constexpr int SettleMs = 1000;
constexpr int ShowingEveryMs = 30;

const char* const Names[] = {"Alpha", "Bravo", "Charlie", "Sierra", "Sigma", "Multi one"};
const char* const IconNames[] = {"utilities-terminal", "text-editor",         "system-file-manager",
                                 "web-browser",        "applications-system", "help-browser"};

class Panel final : public QWidget
{
public:
    Panel()
        : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                               Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint)
    {
        setAttribute(Qt::WA_ShowWithoutActivating);
        resize(320, 96);
    }

    void setContent(const QString& title, const QString& detail, const QIcon& icon)
    {
        m_title = title;
        m_detail = detail;
        m_icon = icon;
        repaint();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath pill;
        pill.addRoundedRect(QRectF(rect()).adjusted(4, 4, -4, -4), 44, 44);
        painter.fillPath(pill, QColor(44, 44, 46));
        m_icon.paint(&painter, QRect(24, 27, 42, 42));
        painter.setPen(Qt::white);
        QFont title = font();
        title.setPixelSize(19);
        title.setWeight(QFont::DemiBold);
        painter.setFont(title);
        painter.drawText(QPointF(80, 44), m_title);
        QFont detail = font();
        detail.setPixelSize(12);
        painter.setFont(detail);
        painter.drawText(QPointF(80, 64), m_detail);
    }

private:
    QString m_title;
    QString m_detail;
    QIcon m_icon;
};

QIcon trayIcon()
{
    QPixmap pixmap(22, 22);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(10, 132, 255));
    painter.drawEllipse(pixmap.rect().adjusted(2, 2, -2, -2));
    return QIcon(pixmap);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int showings = argc > 1 ? std::atoi(argv[1]) : 100;
    QApplication::setQuitOnLastWindowClosed(false);

    QSystemTrayIcon tray(trayIcon());
    tray.setToolTip(QStringLiteral("floor"));
    tray.show();

    Panel panel;
    int shown = 0;
    QTimer step;
    step.setInterval(ShowingEveryMs);
    QObject::connect(&step, &QTimer::timeout, [&] {
        if (shown == showings) {
            step.stop();
            std::puts("done");
            std::fflush(stdout);
            return;
        }
        const int n = shown++;
        const QString name = QString::fromLatin1(Names[n % std::size(Names)]);
        const QIcon icon =
            QIcon::fromTheme(QString::fromLatin1(IconNames[n % std::size(IconNames)]), trayIcon());
        panel.show();
        for (int typed = 1; typed <= 3; ++typed)
            panel.setContent(name, name.left(typed), icon);
        QCoreApplication::processEvents();
        panel.hide();
    });
    QTimer::singleShot(SettleMs, [&] {
        std::puts("idle");
        std::fflush(stdout);
    });
    QTimer::singleShot(2 * SettleMs, &step, qOverload<>(&QTimer::start));
    return app.exec();
}
