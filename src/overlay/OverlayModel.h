// SPDX-License-Identifier: MIT
#pragma once

#include "overlay/OverlayItem.h"

#include <QList>
#include <QObject>
#include <functional>
#include <optional>

namespace velkor {

// Everything the overlay shows. The coordinator writes it; the view reads it
// and reports hover and clicks back through the two callbacks.
class OverlayModel : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    const QList<OverlayItem>& items() const { return m_items; }
    int selection() const { return m_selection; }
    const QString& query() const { return m_query; }
    const QString& mode() const { return m_mode; }

    void setItems(const QList<OverlayItem>& items);
    void setSelection(int selection);
    void setQuery(const QString& query);
    void setMode(const QString& mode);

    // Brings selection back into range after items were replaced; always
    // writes, so observers hear of it even when nothing changed.
    void clamp();

    // items[selection] when selection is in range.
    std::optional<OverlayItem> selected() const;

    // Installed by the coordinator; the view calls them.
    std::function<void(int)> onHover;
    std::function<void(int)> onActivate;

signals:
    void itemsChanged();
    void selectionChanged();
    void queryChanged();
    void modeChanged();
    // After any of the above.
    void changed();

private:
    QList<OverlayItem> m_items;
    int m_selection = 0;
    QString m_query;
    QString m_mode = ModeSwitch;
};

} // namespace velkor
