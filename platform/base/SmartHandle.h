#pragma once

#include <memory>

namespace qvb {

/// The shared handle of the maker's libraries: the last copy deletes the object.
template<class T>
using smart = std::shared_ptr<T>;

} // namespace qvb
