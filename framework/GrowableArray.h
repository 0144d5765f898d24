// A growable array with the classic contract: storage, element count,
// capacity and grow-by. When SetSize needs more than the capacity, the step
// is the grow-by value when one was set, otherwise the element count / 8,
// kept between 4 and 1024; the new capacity is the larger of the requested
// size and the old capacity plus that step. New elements are zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

namespace framework {

template <typename T>
class GrowableArray {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied as plain values");

public:
    GrowableArray() = default;
    GrowableArray(const GrowableArray&) = delete;
    GrowableArray& operator=(const GrowableArray&) = delete;

    ptrdiff_t GetSize() const { return size_; }
    ptrdiff_t GetCapacity() const { return capacity_; }
    ptrdiff_t GetGrowBy() const { return growBy_; }
    T* GetData() { return data_.get(); }
    const T* GetData() const { return data_.get(); }
    T& operator[](ptrdiff_t index) { return At(index); }
    const T& operator[](ptrdiff_t index) const { return const_cast<GrowableArray*>(this)->At(index); }

    // A negative growBy keeps the one set before.
    void SetSize(ptrdiff_t newSize, ptrdiff_t growBy = -1) {
        if (newSize < 0) throw std::length_error("negative array size");
        if (growBy >= 0) growBy_ = growBy;
        if (newSize == 0) {
            data_.reset();
            size_ = capacity_ = 0;
        } else if (data_ == nullptr) {
            data_ = Allocate(newSize);
            size_ = capacity_ = newSize;
        } else if (newSize <= capacity_) {
            if (newSize > size_) std::fill(data_.get() + size_, data_.get() + newSize, T{});
            size_ = newSize;
        } else {
            ptrdiff_t step = growBy_;
            if (step == 0) step = std::min<ptrdiff_t>(1024, std::max<ptrdiff_t>(4, size_ / 8));
            ptrdiff_t newCapacity = std::max(newSize, capacity_ + step);
            auto grown = Allocate(newCapacity);
            std::copy(data_.get(), data_.get() + size_, grown.get());
            data_ = std::move(grown);
            size_ = newSize;
            capacity_ = newCapacity;
        }
    }
    void RemoveAll() { SetSize(0); }
    ptrdiff_t Add(const T& value) {
        ptrdiff_t index = size_;
        SetSize(size_ + 1);
        data_[static_cast<size_t>(index)] = value;
        return index;
    }

private:
    static std::unique_ptr<T[]> Allocate(ptrdiff_t count) {
        return std::unique_ptr<T[]>(new T[static_cast<size_t>(count)]());
    }
    T& At(ptrdiff_t index) {
        if (index < 0 || index >= size_) throw std::out_of_range("array index");
        return data_[static_cast<size_t>(index)];
    }

    std::unique_ptr<T[]> data_;
    ptrdiff_t size_ = 0;
    ptrdiff_t capacity_ = 0;
    ptrdiff_t growBy_ = 0;
};

}  // namespace framework
