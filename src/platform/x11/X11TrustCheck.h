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
    explicit X11TrustCheck(std::shared_ptr<X11Connection> connection);

    bool isTrusted() override { return m_hasDisplay && m_missing.isEmpty(); }
    bool requestTrust() override { return isTrusted(); }
    bool openTrustSettings() override { return false; }
    QString missingExplanation() const override;

    // XTEST re-delivers passed keys, XKEYBOARD tracks modifiers and
    // mapping changes, XInputExtension sees raw key state.
    static const QStringList& requiredExtensions();

private:
    bool m_hasDisplay = false;
    QStringList m_missing;
};

} // namespace velkor::x11
