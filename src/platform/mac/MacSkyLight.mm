// SPDX-License-Identifier: MIT
#include "platform/mac/MacSkyLight.h"

#include <QDebug>
#include <dlfcn.h>

namespace velkor {

namespace {

// Immediate binding (RTLD_NOW, mode 2); the handle is kept even when null,
// so the library is only ever tried once.
void* skyLight()
{
    static void* const handle =
        dlopen("/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight", RTLD_NOW);
    return handle;
}

template <typename Fn> Fn bind(const char* name)
{
    void* const handle = skyLight();
    void* const address = handle ? dlsym(handle, name) : nullptr;
    if (!address)
        qWarning().noquote() << QStringLiteral("[Velkor] CGS symbol unavailable: ") +
                                    QString::fromLatin1(name);
    return reinterpret_cast<Fn>(address);
}

MacSkyLight bindAll()
{
    MacSkyLight bound;
    bound.mainConnection = bind<MacSkyLight::MainConnectionFn>("CGSMainConnectionID");
    bound.copyDisplaySpaces = bind<MacSkyLight::CopyDisplaySpacesFn>("CGSCopyManagedDisplaySpaces");
    bound.setCurrentSpace =
        bind<MacSkyLight::SetCurrentSpaceFn>("CGSManagedDisplaySetCurrentSpace");
    bound.moveWindows = bind<MacSkyLight::MoveWindowsFn>("CGSMoveWindowsToManagedSpace");
    return bound;
}

} // namespace

const MacSkyLight& MacSkyLight::shared()
{
    static const MacSkyLight bound = bindAll();
    return bound;
}

} // namespace velkor
