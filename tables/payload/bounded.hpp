#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>

namespace marlune::tables {

// A sequence of at most N items that lives inside its owner, so that descriptions stay constexpr.
template <class T, std::size_t N> class Bounded {
public:
  constexpr Bounded() = default;
  constexpr Bounded(std::initializer_list<T> items) {
    for (const T &item : items) {
      push_back(item);
    }
  }

  constexpr void push_back(const T &item) {
    if (size_ == N) {
      throw "more items than the description has room for";
    }
    items_[size_] = item;
    ++size_;
  }

  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr bool empty() const { return size_ == 0; }
  [[nodiscard]] constexpr const T &operator[](std::size_t index) const { return items_[index]; }
  [[nodiscard]] constexpr const T *begin() const { return items_.data(); }
  [[nodiscard]] constexpr const T *end() const { return items_.data() + size_; }
  [[nodiscard]] constexpr const T &back() const { return items_[size_ - 1]; }

private:
  std::array<T, N> items_{};
  std::size_t size_ = 0;
};

} // namespace marlune::tables
