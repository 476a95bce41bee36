// SPDX-License-Identifier: MIT
#pragma once

#include "XDesktop.h"

#include <QObject>
#include <QTest>
#include <memory>

namespace velkor::e2e {

// A test class whose every test function runs on a fresh desktop.
class DesktopTestCase : public QObject
{
    Q_OBJECT

protected:
    XDesktop& desktop() { return *m_desktop; }

private slots:
    void init()
    {
        m_desktop = std::make_unique<XDesktop>();
        QVERIFY2(m_desktop->start(), qPrintable(m_desktop->error()));
    }
    void cleanup() { m_desktop.reset(); }

private:
    std::unique_ptr<XDesktop> m_desktop;
};

} // namespace velkor::e2e
