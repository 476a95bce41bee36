// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/X11Client.h"

#include <QList>

namespace velkor::x11 {

class X11Connection;

// Reads what the switcher knows of client windows from their properties, a
// batch of windows at a time: every request goes out before the first reply
// is read. Any client can write any of these properties with any type and
// length; lengths are bounded in the requests, and a value of the wrong type
// or format reads as absent.
class X11ClientReader final
{
public:
    enum Field : unsigned
    {
        PidField = 1u << 0,
        ClassField = 1u << 1,
        GtkIdField = 1u << 2,
        NameField = 1u << 3,
        TypeField = 1u << 4,
        StateField = 1u << 5,
        DesktopField = 1u << 6,
        HintsField = 1u << 7,
        ProtocolsField = 1u << 8,
        AllFields = (1u << 9) - 1
    };

    explicit X11ClientReader(X11Connection& connection);

    // The field a change of this property touches; 0 for properties not read.
    unsigned fieldOf(xcb_atom_t property) const;
    // Reads fields into each client; a window that is gone reads as empty.
    void read(const QList<X11Client*>& clients, unsigned fields);

private:
    void resolvePidsFromResources(const QList<X11Client*>& clients);

    X11Connection& m_connection;
    bool m_hasResourceExtension = false;
};

} // namespace velkor::x11
