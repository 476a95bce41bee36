// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

class QLabel;
class QPushButton;
class QSettings;

namespace velkor {

// A small window on the first start that names the activation key and says
// where to choose another, since many laptops have no Right Super. Not
// modal, and shown without taking the focus from the window the user works
// in.
class FirstStartNotice : public QWidget
{
    Q_OBJECT
public:
    // Where the store remembers that the notice was shown.
    static constexpr const char* ShownKey = "firstStartNoticeShown";

    FirstStartNotice(const QString& keyName, std::function<void()> openSettings,
                     QWidget* parent = nullptr);

    // Shows the notice unless the store says it was shown before, and notes
    // that it now was; null when it was shown before.
    static std::unique_ptr<FirstStartNotice> showOnce(QSettings& store, const QString& keyName,
                                                      std::function<void()> openSettings);

    // Notes in the store that the first start has been greeted; false when
    // it had been before.
    static bool markShown(QSettings& store);

    QLabel& message() const { return *m_message; }
    QPushButton& settingsButton() const { return *m_settings; }
    QPushButton& okButton() const { return *m_ok; }

private:
    QLabel* m_message = nullptr;
    QPushButton* m_settings = nullptr;
    QPushButton* m_ok = nullptr;
};

} // namespace velkor
