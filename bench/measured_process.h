// Runs a program and measures what it needs.
#pragma once

#include <string>
#include <vector>

/// The cost of a process and its descendants.
struct TProcessCost {
    double cpuSeconds = 0;  ///< processor time, user and system
    double peakMiB = 0;     ///< resident memory of the largest of them, at least that of the caller
};

/// Runs a program, a path and its arguments, without standard input and output.
/// Errors: throws std::runtime_error if it cannot be run or ends with a status above 1.
TProcessCost RunMeasured(const std::vector<std::string>& command);
