#ifndef KALMO_SAMPLES_SERVER_FAILURE_H
#define KALMO_SAMPLES_SERVER_FAILURE_H

#include <optional>
#include <string_view>

#include "samples/server/install_log.h"
#include "samples/server/instance.h"

namespace kalmo::sample {

/// An aid for tests: a file named like a program with extension "fail" beside it makes its installer mode do
/// nothing and end with the number of the file's first line. The other lines go to the log.
std::optional<int> nToldToFail(const STInstance& rst, std::wstring_view svProgram, CInstallLog& rclLog);

}  // namespace kalmo::sample

#endif
