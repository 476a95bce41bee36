// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/X11Connection.h"

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QObject>
#include <memory>

namespace velkor::x11 {

// Whether an X selection has an owner, kept current by XFixes selection
// events on Qt's own connection: a compositing manager owns _NET_WM_CM_S<n>
// and a tray host _NET_SYSTEM_TRAY_S<n> for as long as it runs, and when it
// starts, stops or crashes the server tells us. No thread and no polling.
class X11SelectionWatch final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    // prefix: the selection's name without the screen number, which is the
    // connection's own screen.
    X11SelectionWatch(std::shared_ptr<X11Connection> connection, const QByteArray& prefix);
    ~X11SelectionWatch() override;

    bool isOwned() const { return m_owned; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

signals:
    void ownershipChanged(bool owned);

private:
    void readOwner();

    std::shared_ptr<X11Connection> m_connection;
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    // XFixes events arrive numbered from here; 0 when the server lacks
    // XFixes and the first answer stays.
    uint8_t m_firstEvent = 0;
    bool m_owned = false;
};

} // namespace velkor::x11
