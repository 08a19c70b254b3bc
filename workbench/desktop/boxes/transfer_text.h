#pragma once

/// How far a transfer is, in words.

#include <deque>
#include <optional>

#include <QString>

/// The speed of the last few seconds, so that a stall is seen and a start isn't dragged along.
class TransferRate {
public:
    /// `seconds` on any clock that doesn't go back; what is older than the last few seconds is forgotten.
    void Add(double seconds, double bytes);
    /// Nothing before there is something to measure.
    std::optional<double> BytesPerSecond() const;

private:
    struct Sample {
        double seconds;
        double bytes;
    };
    std::deque<Sample> m_samples;
};

/// Such as "1.2 MB of 3 MB, 400 kB/s". Without a total (0 or less) only what is done counts.
QString TransferText(double bytes, double total, std::optional<double> bytes_per_second);
