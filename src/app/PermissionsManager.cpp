// SPDX-License-Identifier: MIT
#include "app/PermissionsManager.h"

#include "platform/SystemServices.h"

#include <utility>

namespace velkor {

PermissionsManager::PermissionsManager(TrustCheck& trust, Clock& clock, QObject* parent)
    : QObject(parent), m_trust(trust), m_clock(clock), m_trusted(trust.isTrusted())
{}

PermissionsManager::~PermissionsManager()
{
    // The poll captures this object.
    if (m_pollTask)
        m_clock.cancel(*m_pollTask);
}

void PermissionsManager::refresh()
{
    setTrusted(m_trust.isTrusted());
}

void PermissionsManager::startPolling(std::function<void()> onGranted)
{
    if (m_pollTask)
        return;
    m_onGranted = std::move(onGranted);
    m_pollTask = m_clock.callEvery(PollSeconds, [this] { poll(); });
}

void PermissionsManager::requestAccess(std::function<void()> onGranted)
{
    setTrusted(m_trust.requestTrust());
    m_trust.openTrustSettings();
    startPolling(std::move(onGranted));
}

QString PermissionsManager::missingExplanation() const
{
    return m_trust.missingExplanation();
}

KeyAccess PermissionsManager::keyAccess() const
{
    return m_trusted ? m_monitorAccess : m_trust.refusal();
}

void PermissionsManager::setMonitorAccess(KeyAccess access)
{
    const KeyAccess before = keyAccess();
    m_monitorAccess = access;
    announceKeyAccess(before);
}

void PermissionsManager::setTrusted(bool trusted)
{
    if (trusted == m_trusted)
        return;
    const KeyAccess before = keyAccess();
    m_trusted = trusted;
    emit trustedChanged(trusted);
    announceKeyAccess(before);
}

void PermissionsManager::announceKeyAccess(KeyAccess before)
{
    if (keyAccess() != before)
        emit keyAccessChanged(keyAccess());
}

void PermissionsManager::poll()
{
    refresh();
    if (!m_trusted)
        return;
    m_clock.cancel(*m_pollTask);
    m_pollTask.reset();
    // Taken out first: the callback may start a new poll or delete us.
    const std::function<void()> onGranted = std::exchange(m_onGranted, nullptr);
    if (onGranted)
        onGranted();
}

} // namespace velkor
