#pragma once

#include <cstddef>
#include <initializer_list>

namespace marlune::tables {

// A sequence of at most N items that lives inside its owner, so that descriptions stay constexpr.
template <class T, std::size_t N> class Bounded {
public:
  constexpr Bounded() = default;
  constexpr Bounded(std::initializer_list<T> items) : Bounded(items.begin(), items.size()) {}
  constexpr Bounded(const T *items, std::size_t size) : size_(size) {
    require_room(size <= N);
    for (std::size_t index = 0; index < size; ++index) {
      items_[index] = items[index];
    }
  }

  constexpr void push_back(const T &item) {
    require_room(size_ < N);
    items_[size_] = item;
    ++size_;
  }

  constexpr void resize(std::size_t size) {
    require_room(size <= N);
    size_ = size;
  }

  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr bool empty() const { return size_ == 0; }
  [[nodiscard]] constexpr const T &operator[](std::size_t index) const { return items_[index]; }
  [[nodiscard]] constexpr T *data() { return items_; }
  [[nodiscard]] constexpr const T *begin() const { return items_; }
  [[nodiscard]] constexpr const T *end() const { return items_ + size_; }
  [[nodiscard]] constexpr const T &back() const { return items_[size_ - 1]; }

private:
  static constexpr void require_room(bool enough) {
    if (!enough) {
      throw "more items than the description has room for";
    }
  }

  // No std::array: its operator is a call, of which the compiler remembers every one.
  T items_[N]{};
  std::size_t size_ = 0;
};

} // namespace marlune::tables
