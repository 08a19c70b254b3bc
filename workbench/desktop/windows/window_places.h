#pragma once

#include <QString>

class QWidget;

/// Where windows stood and how large they were, kept in a file over runs; programs that share it don't disturb each other. Main
/// thread.
class WindowPlaces {
public:
    /// An empty name keeps nothing.
    explicit WindowPlaces(QString file) : m_file(std::move(file)) {}

    /// Puts the window where one of that name last stood, as far as the screens still allow. False when none did.
    bool Restore(const QString& name, QWidget& window) const;
    void Keep(const QString& name, const QWidget& window) const;

private:
    const QString m_file;
};
