// SPDX-License-Identifier: MIT
#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QString>

namespace velkor {

// One font's metrics, with the widths of the texts it measured kept: the
// overlay shows the same names and queries again and again, and shaping a
// text is the costliest part of a change of what it shows.
class TextWidths final
{
public:
    explicit TextWidths(const QFont& font) : m_font(font), m_metrics(font) {}

    const QFont& font() const { return m_font; }
    double height() const { return m_metrics.height(); }
    double advance(const QString& text);
    // text itself when it fits width, else cut with an ellipsis at its end.
    QString elided(const QString& text, double width);

private:
    QFont m_font;
    QFontMetricsF m_metrics;
    QHash<QString, double> m_advances;
};

} // namespace velkor
