// SPDX-License-Identifier: MIT
#include "platform/x11/X11CompoundText.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace velkor::x11 {

std::optional<QString> decodeCompoundText(Display* display, QByteArrayView bytes)
{
    if (!display)
        return std::nullopt;
    // Xlib reads nitems bytes and never writes through value.
    QByteArray copy = bytes.toByteArray();
    XTextProperty property{};
    property.value = reinterpret_cast<unsigned char*>(copy.data());
    property.encoding = XInternAtom(display, "COMPOUND_TEXT", False);
    property.format = 8;
    property.nitems = static_cast<unsigned long>(copy.size());
    char** list = nullptr;
    int count = 0;
    const int status = Xutf8TextPropertyToTextList(display, &property, &list, &count);
    // A positive status counts characters Xlib could not convert; they come
    // out as its default character, which is still the best reading.
    if (status < Success || !list)
        return std::nullopt;
    // Several strings are kept apart by NUL, as in the other text types.
    QString decoded;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            decoded += QChar(0);
        decoded += QString::fromUtf8(list[i]);
    }
    XFreeStringList(list);
    return decoded;
}

} // namespace velkor::x11
