#pragma once

#include <cstddef>
#include <utility>
#include <vector>

// A list that refuses entry N + 1. The owner reports that, in its own words.
template <typename T, int N>
class DTable
{
public:
  static constexpr int capacity = N;
  // Null when full. The pointer holds until the next Add or Remove.
  [[nodiscard]] T* Add(T e) { return Count() < N ? &entries.emplace_back(std::move(e)) : nullptr; }
  // Null outside 0..Count() - 1.
  T* At(int i) { return i >= 0 && i < Count() ? &entries[static_cast<size_t>(i)] : nullptr; }
  const T* At(int i) const { return i >= 0 && i < Count() ? &entries[static_cast<size_t>(i)] : nullptr; }
  int Count() const { return static_cast<int>(entries.size()); }
  bool IsFull() const { return Count() >= N; }
  // Closes the gap, keeps the order. False outside 0..Count() - 1.
  bool Remove(int i)
  {
    if (!At(i))
      return false;
    entries.erase(entries.begin() + i);
    return true;
  }
  void Clear() { entries.clear(); }
  auto begin() { return entries.begin(); }
  auto end() { return entries.end(); }
  auto begin() const { return entries.begin(); }
  auto end() const { return entries.end(); }

private:
  std::vector<T> entries;
};
