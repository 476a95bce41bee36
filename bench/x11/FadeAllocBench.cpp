// SPDX-License-Identifier: MIT
// velkor-fade-bench: heap allocations of the overlay's fade-in, per frame,
// counted in-process: malloc, calloc and realloc are interposed (forwarding
// to glibc's own) and counted on the main thread while a fade runs. A frame
// is one step of the fade's animation, from one opacity change to the next,
// with whatever the main thread does in between (the show, the first
// paint, X events). Runs on whatever Qt platform the environment gives;
// velkor-x11-bench --overlay runs it on its private X display.
#include "overlay/OverlayItem.h"
#include "overlay/OverlayModel.h"
#include "overlay/OverlayWindow.h"
#include "platform/NullPlatform.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11ShellIntegration.h"
#include "settings/Preferences.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPropertyAnimation>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <pthread.h>
#include <vector>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* pointer, size_t size);
}

namespace {

std::atomic<bool> counting{false};
std::atomic<unsigned long> allocations{0};
pthread_t mainThread{};

void countOne()
{
    // Only the main thread's: Qt's X event reader thread allocates an event
    // for each it reads, which says nothing about the fade.
    if (counting.load(std::memory_order_relaxed) && pthread_equal(pthread_self(), mainThread))
        allocations.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

// Every other allocator entry (free, memalign, operator new through
// malloc) stays glibc's; these only count and forward.
extern "C" void* malloc(size_t size)
{
    countOne();
    return __libc_malloc(size);
}

extern "C" void* calloc(size_t count, size_t size)
{
    countOne();
    return __libc_calloc(count, size);
}

extern "C" void* realloc(void* pointer, size_t size)
{
    countOne();
    return __libc_realloc(pointer, size);
}

namespace {

constexpr int Fades = 20;
constexpr double FadeSeconds = 0.14; // the overlay controller's fade-in

void report(const char* name, double value)
{
    std::printf("%s=%.3f\n", name, value);
    std::fflush(stdout);
}

double median(std::vector<double> values)
{
    if (values.empty())
        return -1;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void runEventsFor(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    mainThread = pthread_self();
    using namespace velkor;

    QTemporaryDir dir;
    Preferences prefs(std::make_unique<QSettings>(dir.filePath(QStringLiteral("prefs.ini")),
                                                  QSettings::IniFormat));
    std::unique_ptr<ShellIntegration> shell;
    if (auto connection = x11::X11Connection::fromQt())
        shell = std::make_unique<x11::X11ShellIntegration>(connection, nullptr);
    else
        shell = std::make_unique<NullShellIntegration>();

    OverlayModel model;
    OverlayItem item;
    item.id = QStringLiteral("alpha");
    item.title = QStringLiteral("Alpha");
    item.badge = QStringLiteral("a");
    model.setItems({item, item});
    OverlayWindow window(model, prefs, *shell);
    const QSizeF size = window.fittingSize().value_or(QSizeF(300, 120));
    window.setFrame(QRectF(QPointF(100, 100), size));
    auto* fade = window.findChild<QPropertyAnimation*>();
    if (!fade) {
        std::fprintf(stderr, "the overlay window has no fade animation\n");
        return 1;
    }

    // Reserved up front: recording a frame must not allocate itself.
    std::vector<unsigned long> ticks;
    ticks.reserve(4096);
    QObject::connect(fade, &QVariantAnimation::valueChanged, &window,
                     [&] { ticks.push_back(allocations.load(std::memory_order_relaxed)); });

    std::vector<double> perFade, perLaterTick, ticksPerFade, busyTicks;
    for (int i = 0; i < Fades; ++i) {
        window.orderOut();
        runEventsFor(50);
        ticks.clear();
        allocations = 0;
        counting = true;
        window.fadeIn(FadeSeconds);
        while (window.isFading())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        counting = false;
        perFade.push_back(double(allocations.load()));
        ticksPerFade.push_back(double(ticks.size()));
        // The first two steps hold the show and the first paint; the rest
        // are the fade's own frames.
        int busy = 0;
        for (size_t t = 2; t < ticks.size(); ++t) {
            const double n = double(ticks[t] - ticks[t - 1]);
            perLaterTick.push_back(n);
            busy += n > 0;
        }
        busyTicks.push_back(busy);
    }
    report("fade_frames_median", median(ticksPerFade));
    report("fade_allocations_whole_fade_median", median(perFade));
    report("fade_allocations_per_frame_median", median(perLaterTick));
    report("fade_allocations_per_frame_max",
           perLaterTick.empty() ? -1 : *std::max_element(perLaterTick.begin(), perLaterTick.end()));
    report("fade_frames_that_allocate_median", median(busyTicks));
    return 0;
}
