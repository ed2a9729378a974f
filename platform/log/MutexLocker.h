#pragma once

#include <mutex>

namespace qv {

/// Holds a mutex from its construction to its end.
using MutexLocker = std::lock_guard<std::mutex>;

} // namespace qv
