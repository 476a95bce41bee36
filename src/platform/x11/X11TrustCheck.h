// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemServices.h"

#include <QStringList>
#include <memory>

namespace velkor::x11 {

class X11Connection;

// "Trusted" on X11: Qt runs on an X11 display whose server offers the
// extensions the key monitor needs to grab, track and re-deliver keys.
class X11TrustCheck final : public TrustCheck
{
public:
    // waylandSession: the display is Xwayland's, which hands global keys to
    // no X11 program, so keys could not be watched whatever the server has.
    X11TrustCheck(std::shared_ptr<X11Connection> connection, bool waylandSession);

    bool isTrusted() override { return m_hasDisplay && !m_waylandSession && m_missing.isEmpty(); }
    bool requestTrust() override { return isTrusted(); }
    bool openTrustSettings() override { return false; }
    QString missingExplanation() const override;
    KeyAccess refusal() const override
    {
        return m_waylandSession ? KeyAccess::waylandSession : KeyAccess::notTrusted;
    }

    // XTEST re-delivers passed keys, XKEYBOARD tracks modifiers and
    // mapping changes, XInputExtension sees raw key state.
    static const QStringList& requiredExtensions();

private:
    bool m_hasDisplay = false;
    bool m_waylandSession = false;
    QStringList m_missing;
};

} // namespace velkor::x11
