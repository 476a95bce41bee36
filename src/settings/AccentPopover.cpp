// SPDX-License-Identifier: MIT
#include "settings/AccentPopover.h"

#include "settings/AccentSwatch.h"
#include "settings/ColorHex.h"
#include "settings/Preferences.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QVBoxLayout>
#include <algorithm>

namespace velkor {

namespace {

constexpr int PopoverWidth = 230;
constexpr int ContentPadding = 14;
constexpr int RowSpacing = 12;
constexpr int ChannelLabelWidth = 14;
constexpr int ChannelValueWidth = 30;

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

} // namespace

AccentPopover::AccentPopover(Preferences& prefs, QWidget* parent)
    : QFrame(parent, Qt::Popup), m_prefs(prefs),
      m_preview(new AccentSwatch(AccentSwatch::Shape::preview, this)),
      m_hexField(new QLineEdit(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameShape(QFrame::StyledPanel);
    setFixedWidth(PopoverWidth);
    m_preview->setEnabled(false);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(ContentPadding, ContentPadding, ContentPadding, ContentPadding);
    column->setSpacing(RowSpacing);
    column->addWidget(m_preview, 0, Qt::AlignLeft);

    const struct
    {
        const char* name;
        QColor tint;
    } channels[] = {{"R", Qt::red}, {"G", QColor(0, 160, 0)}, {"B", Qt::blue}};
    for (int i = 0; i < 3; ++i) {
        auto* row = new QHBoxLayout;
        auto* name = new QLabel(QString::fromLatin1(channels[i].name), this);
        name->setFixedWidth(ChannelLabelWidth);
        QPalette tinted = name->palette();
        tinted.setColor(QPalette::WindowText, channels[i].tint);
        name->setPalette(tinted);
        auto* slider = new QSlider(Qt::Horizontal, this);
        slider->setRange(0, 255);
        auto* value = new QLabel(QStringLiteral("0"), this);
        value->setFixedWidth(ChannelValueWidth);
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row->addWidget(name);
        row->addWidget(slider, 1);
        row->addWidget(value);
        column->addLayout(row);
        m_sliders[size_t(i)] = slider;
        m_values[size_t(i)] = value;
        connect(slider, &QSlider::valueChanged, this, &AccentPopover::sliderMoved);
    }

    auto* hexRow = new QHBoxLayout;
    auto* hash = new QLabel(QStringLiteral("#"), this);
    hash->setForegroundRole(QPalette::PlaceholderText);
    m_hexField->setPlaceholderText(QStringLiteral("FEBC2E"));
    m_hexField->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    hexRow->addWidget(hash);
    hexRow->addWidget(m_hexField, 1);
    column->addLayout(hexRow);
    connect(m_hexField, &QLineEdit::returnPressed, this, &AccentPopover::applyTypedHex);
}

void AccentPopover::showEvent(QShowEvent* event)
{
    load();
    QFrame::showEvent(event);
}

void AccentPopover::load()
{
    if (m_loaded)
        return;
    m_loaded = true;
    const QColor color = colorFromHex(m_prefs.accentHex()).value_or(QColor(Qt::yellow)).toRgb();
    setChannels(color.red(), color.green(), color.blue());
    m_hexField->setText(currentHex());
}

QString AccentPopover::currentHex() const
{
    return QStringLiteral("%1%2%3")
        .arg(m_sliders[red]->value(), 2, 16, QLatin1Char('0'))
        .arg(m_sliders[green]->value(), 2, 16, QLatin1Char('0'))
        .arg(m_sliders[blue]->value(), 2, 16, QLatin1Char('0'))
        .toUpper();
}

QColor AccentPopover::previewColor() const
{
    return m_preview->color();
}

std::optional<QString> AccentPopover::typedHexDigits(const QString& text)
{
    QString digits = text.trimmed();
    digits.remove(QLatin1Char('#'));
    if (digits.size() != 6 || !std::all_of(digits.cbegin(), digits.cend(), isHexDigit))
        return std::nullopt;
    return digits.toUpper();
}

void AccentPopover::applyTypedHex()
{
    const std::optional<QString> digits = typedHexDigits(m_hexField->text());
    if (!digits)
        return;
    const QColor color = *colorFromHex(*digits);
    setChannels(color.red(), color.green(), color.blue());
    m_hexField->setText(*digits);
    m_prefs.setAccentHex(QLatin1Char('#') + *digits);
}

void AccentPopover::sliderMoved()
{
    showChannels();
    // Moves made before the stored colour was read would overwrite it.
    if (!m_loaded)
        return;
    m_hexField->setText(currentHex());
    m_prefs.setAccentHex(QLatin1Char('#') + currentHex());
}

void AccentPopover::setChannels(int r, int g, int b)
{
    const int values[] = {r, g, b};
    for (size_t i = 0; i < 3; ++i) {
        const QSignalBlocker blocker(m_sliders[i]);
        m_sliders[i]->setValue(values[i]);
    }
    showChannels();
}

void AccentPopover::showChannels()
{
    for (size_t i = 0; i < 3; ++i)
        m_values[i]->setText(QString::number(m_sliders[i]->value()));
    m_preview->setColor(
        QColor(m_sliders[red]->value(), m_sliders[green]->value(), m_sliders[blue]->value()));
}

} // namespace velkor
