// State of effects that remember: large, zero at first, and only paid for where it is touched.
#ifndef KVX_FRAMEWORK_ZEROED_ARRAY_H_
#define KVX_FRAMEWORK_ZEROED_ARRAY_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

// Pixels of a frame; 0 if a side is not above 0.
inline size_t PixelCount(int32_t width, int32_t height) {
  return width > 0 && height > 0 ? static_cast<size_t>(width) * static_cast<size_t>(height) : 0;
}

template <typename T>
class ZeroedArray {
 public:
  // Drops what was there. False, and empty, for a count of 0 and if memory is exhausted.
  bool Allocate(size_t count) {
    data_.reset();
    data_.reset(count > 0 ? static_cast<T*>(std::calloc(count, sizeof(T))) : nullptr);
    size_ = data_ ? count : 0;
    return size_ > 0;
  }
  void Free() { Allocate(0); }
  void Clear() {
    if (data_) std::memset(data_.get(), 0, size_ * sizeof(T));
  }

  T* Data() { return data_.get(); }
  const T* Data() const { return data_.get(); }
  size_t Size() const { return size_; }
  explicit operator bool() const { return data_ != nullptr; }

 private:
  struct Release {
    void operator()(T* data) const { std::free(data); }
  };
  std::unique_ptr<T[], Release> data_;
  size_t size_ = 0;
};

#endif  // KVX_FRAMEWORK_ZEROED_ARRAY_H_
