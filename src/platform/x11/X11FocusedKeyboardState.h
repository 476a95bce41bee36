// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/X11Connection.h"

#include <QObject>
#include <memory>

class QWindow;

namespace velkor::x11 {

// Qt's connection asks the server for every change of the keyboard's state,
// desktop-wide: each Shift in any app, each press of the activation key,
// each mouse button. Qt needs the modifiers and the group to translate the
// keys its own windows get, and Velkor's windows get keys only while one of
// them has the focus, which is seldom; the rest of the time each change
// wakes Qt's event thread and then the main thread for nothing. So Qt hears
// of the modifiers and the group while one of its windows has the focus, and
// of nothing otherwise. When a window gets the focus, Qt is first told the
// state as it is then: Qt versions that follow the modifiers only through
// these events would otherwise type with what changed while they were not
// listening (Shift let go since) until the next change.
class X11FocusedKeyboardState final : public QObject
{
public:
    explicit X11FocusedKeyboardState(std::shared_ptr<X11Connection> connection);
    ~X11FocusedKeyboardState() override;

private:
    void follow(QWindow* focused);
    void listen(bool on);
    void tellState(QWindow* window);

    std::shared_ptr<X11Connection> m_connection;
    // XKB events arrive numbered from here; 0 when the server lacks XKB.
    uint8_t m_firstEvent = 0;
    // As Qt left it.
    bool m_listening = true;
};

} // namespace velkor::x11
