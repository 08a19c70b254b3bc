#include "workbench/desktop/boxes/transfer_text.h"

#include <algorithm>

#include <QLocale>

namespace {

constexpr double remembered_seconds = 4;
constexpr double least_seconds = 0.25;
constexpr double most_bytes = 9e18; // fits the integer that sizes are formatted from

QString SizeText(double bytes) {
    return QLocale().formattedDataSize(static_cast<qint64>(std::clamp(bytes, 0.0, most_bytes)), 1, QLocale::DataSizeSIFormat);
}

} // namespace

void TransferRate::Add(double seconds, double bytes) {
    if (!m_samples.empty() && bytes < m_samples.back().bytes) {
        m_samples.clear(); // another transfer began
    }
    m_samples.push_back({seconds, bytes});
    while (m_samples.size() > 2 && seconds - m_samples[1].seconds >= remembered_seconds) {
        m_samples.pop_front();
    }
}

std::optional<double> TransferRate::BytesPerSecond() const {
    if (m_samples.empty()) {
        return std::nullopt;
    }
    const double seconds = m_samples.back().seconds - m_samples.front().seconds;
    return seconds < least_seconds ? std::nullopt : std::optional((m_samples.back().bytes - m_samples.front().bytes) / seconds);
}

QString TransferText(double bytes, double total, std::optional<double> bytes_per_second) {
    QString text = total > 0 ? QString("%1 of %2").arg(SizeText(bytes), SizeText(total)) : SizeText(bytes);
    if (bytes_per_second) {
        text += QString(", %1/s").arg(SizeText(*bytes_per_second));
    }
    return text;
}
