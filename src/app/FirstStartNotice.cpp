// SPDX-License-Identifier: MIT
#include "app/FirstStartNotice.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QVBoxLayout>

namespace velkor {

namespace {

constexpr int Width = 380;
constexpr int Margin = 24;

} // namespace

FirstStartNotice::FirstStartNotice(const QString& keyName, std::function<void()> openSettings,
                                   QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(QStringLiteral("Velkor is running"));
    // The user is at work in another window; the notice waits beside it.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFixedWidth(Width);

    auto* column = new QVBoxLayout(this);
    auto* title = new QLabel(QStringLiteral("Your activation key is %1").arg(keyName));
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    column->addWidget(title);
    m_message = new QLabel(
        QStringLiteral("Hold %1 and press the first letter of an app to switch to it; double-tap "
                       "it for the windows.\n\nNo %1 on this keyboard? Choose another activation "
                       "key in Settings, where pressing it shows at once whether Velkor sees it. "
                       "Settings are also in Velkor's tray menu.")
            .arg(keyName));
    m_message->setWordWrap(true);
    column->addWidget(m_message);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    m_settings = new QPushButton(QStringLiteral("Open Settings"));
    m_ok = new QPushButton(QStringLiteral("OK"));
    buttons->addWidget(m_settings);
    buttons->addWidget(m_ok);
    column->addLayout(buttons);

    connect(m_settings, &QPushButton::clicked, this,
            [this, openSettings = std::move(openSettings)] {
                close();
                if (openSettings)
                    openSettings();
            });
    connect(m_ok, &QPushButton::clicked, this, &QWidget::close);
}

bool FirstStartNotice::markShown(QSettings& store)
{
    if (store.value(QLatin1String(ShownKey)).toBool())
        return false;
    store.setValue(QLatin1String(ShownKey), true);
    return true;
}

std::unique_ptr<FirstStartNotice> FirstStartNotice::showOnce(QSettings& store,
                                                             const QString& keyName,
                                                             std::function<void()> openSettings)
{
    if (!markShown(store))
        return nullptr;
    auto notice = std::make_unique<FirstStartNotice>(keyName, std::move(openSettings));
    notice->adjustSize();
    // Top right, away from the middle of the screen where the work is.
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        notice->move(area.right() - notice->frameGeometry().width() - Margin, area.top() + Margin);
    }
    notice->show();
    return notice;
}

} // namespace velkor
