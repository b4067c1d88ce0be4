#pragma once

#include "FatalError.h"

#include <array>
#include <cstddef>

namespace stellwyn::core {

// A fixed table whose every access is bounds-tested: an index outside 0..N-1 is the fatal
// error, as a subscript out of range always ended the program.
template <typename T, std::size_t N> class CheckedArray {
public:
    static constexpr int size() { return static_cast<int>(N); }

    T& operator[](long long index) { return items_[checked(index)]; }
    const T& operator[](long long index) const { return items_[checked(index)]; }

    void fill(const T& value) { items_.fill(value); }

private:
    static std::size_t checked(long long index) {
        if (index < 0 || index >= static_cast<long long>(N)) {
            throw FatalError(QStringLiteral("Subscript out of range (index %1 of a table of %2)")
                                 .arg(index)
                                 .arg(N));
        }
        return static_cast<std::size_t>(index);
    }

    std::array<T, N> items_{};
};

} // namespace stellwyn::core
