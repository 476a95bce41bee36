// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace velkor {

// The action keys, in this order; W, Q and H count only with Left Command.
enum class KeyAction
{
    cancel,
    commit,
    next,
    previous,
    closeWindow,
    quitApp,
    hideApp,
    previousSpace,
    nextSpace,
};

// What the key monitor calls; true from an operation means the key was
// consumed and is swallowed. The coordinator is the only implementer.
class KeyMonitorHandler
{
public:
    virtual ~KeyMonitorHandler() = default;

    virtual void beginSession() = 0;
    virtual void commitAndEnd() = 0;
    virtual void endSession() = 0;
    virtual void enterWindowMode() = 0;
    virtual bool handleCharacter(const QString& ch) = 0;
    virtual bool handleDigit(int n) = 0;
    virtual bool handleAction(KeyAction action) = 0;
    // backwards: Shift was held too.
    virtual bool commandTabPressed(bool backwards) = 0;
    virtual bool cycleSameAppWindows(bool backwards) = 0;
    virtual void commandTabReleased() = 0;
    virtual void setSecondaryDown(bool down) = 0;
};

} // namespace velkor
