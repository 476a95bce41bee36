// SPDX-License-Identifier: MIT
#include "app/OnboardingWindow.h"

#include "app/MenuBarIcon.h"
#include "app/PermissionsManager.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace velkor {

namespace {

const QColor Accent(0xFE, 0xBC, 0x2E);
const QColor GrantedGreen(40, 170, 70);
constexpr int Spacing = 20;
constexpr int Padding = 40;
constexpr int BodyWidth = 360;
constexpr int SymbolSize = 52;

// The platform's mark of a keyboard shortcut (⌘ on macOS) or else Velkor's
// own, on an accent square.
QPixmap welcomeSymbol(KeyNaming naming)
{
    QPixmap pixmap(SymbolSize, SymbolSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Accent);
    painter.drawRoundedRect(QRectF(2, 2, SymbolSize - 4, SymbolSize - 4), 11, 11);
    if (naming != KeyNaming::apple) {
        constexpr int Inset = 10;
        painter.drawPixmap(
            Inset, Inset,
            MenuBarIcon::icon(Qt::white).pixmap(SymbolSize - 2 * Inset, SymbolSize - 2 * Inset));
        return pixmap;
    }
    QFont font;
    font.setPixelSize(30);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(pixmap.rect(), Qt::AlignCenter, QStringLiteral("⌘"));
    return pixmap;
}

} // namespace

OnboardingWindow::OnboardingWindow(PermissionsManager& permissions, PlatformTraits traits,
                                   std::function<void()> onGranted, QWidget* parent)
    : OnboardingWindow(permissions, traits, std::move(onGranted),
                       describeOnboarding(permissions.keyAccess(), traits.keyNaming,
                                          permissions.missingExplanation()),
                       parent)
{}

OnboardingWindow::OnboardingWindow(PermissionsManager& permissions, PlatformTraits traits,
                                   std::function<void()> onGranted, const OnboardingWording& words,
                                   QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowCloseButtonHint | Qt::WindowTitleHint),
      m_permissions(permissions), m_onGranted(std::move(onGranted)),
      m_offersRequest(!words.requestButton.isEmpty()), m_title(new QLabel(words.title)),
      m_body(new QLabel(words.body)), m_request(new QPushButton(words.requestButton)),
      m_granted(new QLabel(QStringLiteral("✔ Access granted"))),
      m_continue(new QPushButton(QStringLiteral("Continue")))
{
    setWindowTitle(QStringLiteral("Welcome to Velkor"));
    setFixedSize(WindowSize);

    auto* symbol = new QLabel;
    symbol->setPixmap(welcomeSymbol(traits.keyNaming));
    QFont titleFont = m_title->font();
    titleFont.setPixelSize(18);
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    QFont bodyFont = m_body->font();
    bodyFont.setPixelSize(13);
    m_body->setFont(bodyFont);
    m_body->setWordWrap(true);
    m_body->setAlignment(Qt::AlignHCenter);
    m_body->setMaximumWidth(BodyWidth);
    m_body->setForegroundRole(QPalette::PlaceholderText);

    QPalette tinted = m_request->palette();
    tinted.setColor(QPalette::Button, Accent);
    tinted.setColor(QPalette::ButtonText, Qt::black);
    m_request->setPalette(tinted);
    QFont grantedFont = m_granted->font();
    grantedFont.setPixelSize(14);
    grantedFont.setWeight(QFont::DemiBold);
    m_granted->setFont(grantedFont);
    QPalette green = m_granted->palette();
    green.setColor(QPalette::WindowText, GrantedGreen);
    m_granted->setPalette(green);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Padding, Padding, Padding, Padding);
    column->setSpacing(Spacing);
    column->addStretch(1);
    for (QWidget* widget : {static_cast<QWidget*>(symbol), static_cast<QWidget*>(m_title),
                            static_cast<QWidget*>(m_body), static_cast<QWidget*>(m_request),
                            static_cast<QWidget*>(m_granted), static_cast<QWidget*>(m_continue)})
        column->addWidget(widget, 0, Qt::AlignHCenter);
    column->addStretch(1);

    connect(m_request, &QPushButton::clicked, this,
            [this] { m_permissions.requestAccess(m_onGranted); });
    connect(m_continue, &QPushButton::clicked, this, [this] {
        if (m_onGranted)
            m_onGranted();
    });
    connect(&m_permissions, &PermissionsManager::trustedChanged, this,
            &OnboardingWindow::showTrust);
    showTrust();
}

void OnboardingWindow::showEvent(QShowEvent* event)
{
    // Access may have been granted elsewhere while the window was hidden.
    m_permissions.refresh();
    showTrust();
    QWidget::showEvent(event);
}

void OnboardingWindow::closeEvent(QCloseEvent* event)
{
    QWidget::closeEvent(event);
    emit closed();
}

void OnboardingWindow::keyPressEvent(QKeyEvent* event)
{
    // Return is Continue's shortcut; a plain window has no default button.
    const bool returnKey = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (returnKey && m_continue->isVisible()) {
        m_continue->click();
        return;
    }
    QWidget::keyPressEvent(event);
}

void OnboardingWindow::showTrust()
{
    const bool trusted = m_permissions.isTrusted();
    m_request->setVisible(!trusted && m_offersRequest);
    m_granted->setVisible(trusted);
    m_continue->setVisible(trusted);
    if (trusted)
        m_continue->setFocus();
}

} // namespace velkor
