// PuppetVector, the list of dimension indices of an axis: a vector with a default value for every
// index beyond its end.

#ifndef BACKEND_TABLES_PUPPETVECTOR_H
#define BACKEND_TABLES_PUPPETVECTOR_H

#include <stdexcept>
#include <vector>

// Copies and moves include the default.
template <typename T>
class PuppetVector {
 public:
  using value_type = T;
  using iterator = typename std::vector<T>::iterator;
  using const_iterator = typename std::vector<T>::const_iterator;

  // Holds no values; `fill` is the default.
  explicit PuppetVector(T fill) : value(fill) {}

  [[nodiscard]] unsigned long size() const noexcept { return values.size(); }
  [[nodiscard]] bool empty() const noexcept { return values.empty(); }
  [[nodiscard]] iterator begin() noexcept { return values.begin(); }
  [[nodiscard]] iterator end() noexcept { return values.end(); }
  [[nodiscard]] const_iterator begin() const noexcept { return values.begin(); }
  [[nodiscard]] const_iterator end() const noexcept { return values.end(); }

  // Returns the value at `i`, or the default if there is none.
  const T& operator[](unsigned long i) const { return i < values.size() ? values[i] : value; }
  // Appends the default until there is a value at `i`, and returns it. Reading through this
  // operator lengthens the vector too, on purpose: getDimensionIndex() of the display headings
  // depends on it.
  T& operator[](unsigned long i) {
    if (i >= values.size()) {
      if (i >= values.max_size()) {
        throw std::length_error("PuppetVector");
      }
      values.insert(values.end(), i - values.size() + 1, value);
    }
    return values[i];
  }

  void push_back(T v) { values.push_back(v); }
  // Inserts a value in front of a position. Returns the position of the value.
  iterator insert(const_iterator position, T v) { return values.insert(position, v); }
  // Removes one value. Returns the position of the one after it.
  iterator erase(const_iterator position) { return values.erase(position); }
  void clear() noexcept { values.clear(); }

 private:
  std::vector<T> values;
  T value;
};

#endif
