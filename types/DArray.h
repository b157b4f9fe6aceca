/// DArray: the one growable array of the library, a flat run of elements that can also be seen as a
/// table of rows by columns, stored column after column. The data objects keep their samples in it.
///
/// The element at row r, column c has index c * m_Rows + r, and m_Count is m_Rows * m_Cols. A plain
/// list has one row, and each element is a column. Operations that add or remove by count work in
/// whole columns.
///
/// The capacity for n elements is the next multiple of m_Grain above n; there is no doubling.
/// Elements are moved by bytes: growing and shifting run no constructor and no destructor, and
/// every element type must bear that. The storage comes from malloc, so capacity beyond the count
/// holds no objects. Pointers into the storage are stale after any call that may grow it.
///
/// Negative counts count as 0; sizes are computed in 64 bits. Where the system refuses memory, a
/// freshly sized array is left empty with a count of 0, and a growing one as it was; nothing
/// throws.
#pragma once

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

#include "types/MemoryWatch.h"

template <typename T>
class DArray {
public:
    bool m_ZeroAlloc = false;  ///< zero-fill every new allocation over its whole capacity
    int m_Grain = 256;         ///< allocation granule, in elements
    int64_t m_Capacity = 0;    ///< elements that the allocation holds
    int64_t m_Count = 0;       ///< elements in use
    int64_t m_Cols = 0;        ///< columns
    int64_t m_Rows = 1;        ///< rows, never below 1
    T* m_Data = nullptr;       ///< the elements

    // Construction

    DArray() = default;
    /// A list of `n` blank elements; with none, nothing is allocated.
    explicit DArray(int n) { Size(n); }
    /// A table of blank elements.
    DArray(int rows, int cols) { Size(rows, cols); }
    /// A deep copy.
    DArray(const DArray& other) { alloccopy(other); }
    DArray& operator=(const DArray& other);
    virtual ~DArray() { clear(); }

    // Access, without bounds checks

    int Count() const { return static_cast<int>(m_Count); }
    int RCount() const { return static_cast<int>(m_Rows); }
    int CCount() const { return static_cast<int>(m_Cols); }
    int Capacity() const { return static_cast<int>(m_Capacity); }
    /// The elements; may be null on an empty array.
    T* Data() { return m_Data; }
    const T* Data() const { return m_Data; }
    T& operator[](int i) { return m_Data[i]; }
    const T& operator[](int i) const { return m_Data[i]; }
    T& operator()(int r, int c) { return m_Data[r + c * m_Rows]; }
    const T& operator()(int r, int c) const { return m_Data[r + c * m_Rows]; }
    T& Last() { return m_Data[m_Count - 1]; }

    // Sizing

    /// Throws the content away and makes a list of `n` blank elements; 0 frees everything.
    void Size(int n) { Size(1, n); }
    /// Throws the content away and makes a table. Rows below 1 count as 1.
    void Size(int rows, int cols);
    /// Grow the capacity to hold `n`, if it doesn't yet; the count stays.
    void Reserve(int n) { realloc(n); }
    void realloc(long n) { Grow(n); }
    /// Makes a list of `n`, keeping the content: new elements are blank, those beyond `n` are
    /// destroyed, and the allocation never shrinks.
    void ReSize(int n) { ReSize(1, n); }
    /// The same for a table. Elements keep their flat index, so a change of rows moves them to
    /// other places of the table.
    void ReSize(int rows, int cols);
    /// As ReSize(n), but leaves m_Rows and m_Cols as they are.
    void resize(long n);
    /// Sets m_Capacity for `n` and returns a new allocation, zero-filled if m_ZeroAlloc is set. It
    /// copies nothing and doesn't store the pointer, which the caller frees with free. Null, and
    /// nothing set, where memory is refused.
    T* alloc(long n);
    /// Takes granule, zero flag, count and shape from `other` and copies its elements into a new
    /// allocation. The old content must have been freed.
    void alloccopy(const DArray& other);
    /// Destroys the elements and frees the allocation; m_Rows and m_Cols stay.
    void clear();
    /// The same, and makes the shape an empty list.
    void Clear();

    // Changing the content. `n` is first cut down to a whole number of columns; if nothing is left,
    // nothing happens. Sources may be elements of the array itself.

    /// `n` copies from `src` on, put in at index `at`, which is limited to 0 and the count.
    void Insert(const T* src, int at, int n);
    /// Appends `n` consecutive elements that begin at `v`: with `n` above 1 pass the first of a
    /// run.
    void Add(const T& v, int n = 1);
    /// Appends blanks; any part of a column is dropped.
    void AddBlank(int n = 1);
    /// Insert with blanks.
    void InsertBlank(int at, int n);
    /// Overwrites the elements from `at` on. An `at` at or beyond the count is moved to the last
    /// element, and `n` is cut so that the run stays inside. Nothing happens on an empty array.
    void Replace(const T* src, int at, int n);
    /// Removes elements, limited as in Replace, and always in whole columns.
    void Remove(int at, int n);
    /// Moves the `n` elements at `from` to `to`, all three cut to whole columns, at least one
    /// element.
    void Reorder(int from, int to, int n);
    /// qsort by the caller's comparison, whose arguments point at elements.
    void Sort(int (*cmp)(const void*, const void*));
    /// Exchanges the elements, capacity, count and columns of two arrays. The rows are not
    /// exchanged: this array takes those of `other`, which keeps its own. False on itself.
    bool SwapData(DArray& other);

private:
    static constexpr bool Plain = std::is_trivial_v<T>;

    static void* Bytes(T* p) { return p; }
    static const void* Bytes(const T* p) { return p; }
    static size_t ByteCount(int64_t n) { return static_cast<size_t>(n) * sizeof(T); }
    static void MakeBlank(T* p, int64_t n);
    static void MakeCopies(T* target, const T* src, int64_t n);
    static void Destroy(T* p, int64_t n);

    int64_t CapacityFor(int64_t n) const;
    bool IsOwn(const T* p) const { return m_Data && p >= m_Data && p < m_Data + m_Count; }
    bool AllocBlank(int64_t n);
    bool Grow(int64_t n);
    bool SetCount(int64_t n);
    int64_t LimitToOwn(const T* src, int64_t n) const;
    T* OpenGap(int64_t at, int64_t& n);
    void InsertAt(const T* src, int64_t at, int64_t n);
    void InsertOwn(const T* src, int64_t at, int64_t n);
    void LimitRun(int& at, int64_t& n) const;
    int64_t WholeColumns(int64_t n) const { return n - n % m_Rows; }
};

// ---- Elements

template <typename T>
void DArray<T>::MakeBlank(T* p, int64_t n) {
    if constexpr (Plain) {
        if (n > 0) memset(Bytes(p), 0, ByteCount(n));
    } else {
        for (int64_t i = 0; i < n; ++i)
            ::new (Bytes(p + i)) T();
    }
}

template <typename T>
void DArray<T>::MakeCopies(T* target, const T* src, int64_t n) {
    if constexpr (Plain) {
        if (n > 0) memcpy(Bytes(target), Bytes(src), ByteCount(n));
    } else {
        for (int64_t i = 0; i < n; ++i)
            ::new (Bytes(target + i)) T(src[i]);
    }
}

template <typename T>
void DArray<T>::Destroy(T* p, int64_t n) {
    if constexpr (!Plain) {
        for (int64_t i = 0; i < n; ++i)
            p[i].~T();
    }
}

// ---- Storage

// The capacity for `n`, or -1 where its bytes can't be counted.
template <typename T>
int64_t DArray<T>::CapacityFor(int64_t n) const {
    constexpr int64_t Limit = INT64_MAX / static_cast<int64_t>(sizeof(T));
    const int64_t grain = std::max(m_Grain, 1);
    return n > Limit - grain ? -1 : n + grain - n % grain;
}

template <typename T>
T* DArray<T>::alloc(long n) {
    const int64_t capacity = CapacityFor(std::max(n, 0L));
    void* data = nullptr;
    if (capacity >= 0) {
        data = m_ZeroAlloc ? ::calloc(1, ByteCount(capacity)) : ::malloc(ByteCount(capacity));
    }
    if (data) m_Capacity = capacity;
    if (!data) ++RefusedBlocks;
    return static_cast<T*>(data);
}

// Storage for `n` blanks in an array that has none. Blanks of a plain type come zeroed from the
// system, so that a big count costs address space until its elements are used.
template <typename T>
bool DArray<T>::AllocBlank(int64_t n) {
    const bool zeroAlloc = m_ZeroAlloc;
    m_ZeroAlloc = zeroAlloc || Plain;
    m_Data = alloc(n);
    m_ZeroAlloc = zeroAlloc;
    if (!m_Data) return false;
    if constexpr (!Plain) MakeBlank(m_Data, n);
    m_Count = n;
    return true;
}

template <typename T>
bool DArray<T>::Grow(int64_t n) {
    if (n <= m_Capacity) return true;
    const int64_t capacity = CapacityFor(n);
    void* moved = capacity < 0 ? nullptr : ::realloc(Bytes(m_Data), ByteCount(capacity));
    if (!moved) {
        ++RefusedBlocks;
        return false;
    }
    T* data = static_cast<T*>(moved);
    if (m_ZeroAlloc) memset(Bytes(data + m_Count), 0, ByteCount(capacity - m_Count));
    m_Data = data;
    m_Capacity = capacity;
    return true;
}

// Keeps the content up to `n` elements and fills up with blanks.
template <typename T>
bool DArray<T>::SetCount(int64_t n) {
    if (!m_Data) return n == 0 || AllocBlank(n);
    if (!Grow(n)) return false;
    if (n > m_Count) MakeBlank(m_Data + m_Count, n - m_Count);
    if (n < m_Count) Destroy(m_Data + n, m_Count - n);
    m_Count = n;
    return true;
}

template <typename T>
void DArray<T>::clear() {
    Destroy(m_Data, m_Count);
    ::free(Bytes(m_Data));
    m_Data = nullptr;
    m_Capacity = 0;
    m_Count = 0;
}

template <typename T>
void DArray<T>::Clear() {
    clear();
    m_Cols = 0;
    m_Rows = 1;
}

template <typename T>
void DArray<T>::alloccopy(const DArray& other) {
    m_Grain = other.m_Grain;
    m_ZeroAlloc = other.m_ZeroAlloc;
    m_Data = other.m_Count > 0 ? alloc(other.m_Count) : nullptr;
    if (other.m_Count > 0 && !m_Data) {
        Clear();
        return;
    }
    MakeCopies(m_Data, other.m_Data, other.m_Count);
    m_Count = other.m_Count;
    m_Cols = other.m_Cols;
    m_Rows = other.m_Rows;
}

template <typename T>
DArray<T>& DArray<T>::operator=(const DArray& other) {
    if (this == &other) return *this;
    clear();
    alloccopy(other);
    return *this;
}

// ---- Sizing

template <typename T>
void DArray<T>::Size(int rows, int cols) {
    Clear();
    const int64_t wantedRows = std::max(rows, 1);
    const int64_t wantedCols = std::max(cols, 0);
    if (wantedCols > 0 && !AllocBlank(wantedRows * wantedCols)) return;
    m_Rows = wantedRows;
    m_Cols = wantedCols;
}

template <typename T>
void DArray<T>::ReSize(int rows, int cols) {
    const int64_t wantedRows = std::max(rows, 1);
    const int64_t wantedCols = std::max(cols, 0);
    if (!SetCount(wantedRows * wantedCols)) return;
    m_Rows = wantedRows;
    m_Cols = wantedCols;
}

template <typename T>
void DArray<T>::resize(long n) {
    SetCount(std::max(n, 0L));
}

// ---- Content

// Makes room for `n` elements at `at`, both limited as Insert does. Null if there is nothing to
// put in or memory is refused; otherwise the caller constructs the elements at the result.
template <typename T>
T* DArray<T>::OpenGap(int64_t at, int64_t& n) {
    n = WholeColumns(n);
    if (n <= 0 || !Grow(m_Count + n)) return nullptr;
    const int64_t target = std::clamp(at, int64_t{0}, m_Count);
    T* gap = m_Data + target;
    memmove(Bytes(gap + n), Bytes(gap), ByteCount(m_Count - target));
    m_Count += n;
    m_Cols += n / m_Rows;
    return gap;
}

// A run that begins in the array itself ends with the array.
template <typename T>
int64_t DArray<T>::LimitToOwn(const T* src, int64_t n) const {
    return IsOwn(src) ? std::min<int64_t>(n, m_Data + m_Count - src) : n;
}

// Growing and shifting would move the source, so it is copied aside first.
template <typename T>
void DArray<T>::InsertOwn(const T* src, int64_t at, int64_t n) {
    n = WholeColumns(LimitToOwn(src, n));
    if (n <= 0) return;
    T* copies = static_cast<T*>(::malloc(ByteCount(n)));
    if (!copies) {
        ++RefusedBlocks;
        return;
    }
    MakeCopies(copies, src, n);
    if (T* gap = OpenGap(at, n)) {
        memcpy(Bytes(gap), Bytes(copies), ByteCount(n));
    } else {
        Destroy(copies, n);
    }
    ::free(Bytes(copies));
}

template <typename T>
void DArray<T>::InsertAt(const T* src, int64_t at, int64_t n) {
    if (!src) return;
    if (IsOwn(src)) {
        InsertOwn(src, at, n);
        return;
    }
    if (T* gap = OpenGap(at, n)) MakeCopies(gap, src, n);
}

template <typename T>
void DArray<T>::Insert(const T* src, int at, int n) {
    InsertAt(src, at, n);
}

template <typename T>
void DArray<T>::Add(const T& v, int n) {
    InsertAt(&v, m_Count, n);
}

template <typename T>
void DArray<T>::AddBlank(int n) {
    const int64_t cols = (m_Count + std::max(n, 0)) / m_Rows;
    if (SetCount(m_Rows * cols)) m_Cols = cols;
}

template <typename T>
void DArray<T>::InsertBlank(int at, int n) {
    int64_t count = n;
    if (T* gap = OpenGap(at, count)) MakeBlank(gap, count);
}

template <typename T>
void DArray<T>::LimitRun(int& at, int64_t& n) const {
    n = WholeColumns(n);
    at = static_cast<int>(std::clamp<int64_t>(at, 0, m_Count - 1));
    n = std::min(n, m_Count - at);
}

template <typename T>
void DArray<T>::Replace(const T* src, int at, int n) {
    if (m_Count == 0 || !src) return;
    int64_t count = LimitToOwn(src, n);
    LimitRun(at, count);
    if (count <= 0) return;
    T* target = m_Data + at;
    if constexpr (Plain) {
        memmove(Bytes(target), Bytes(src), ByteCount(count));
    } else if (std::less<const T*>()(src, target)) {
        std::copy_backward(src, src + count, target + count);
    } else {
        std::copy(src, src + count, target);
    }
}

template <typename T>
void DArray<T>::Remove(int at, int n) {
    if (m_Count == 0) return;
    int64_t count = n;
    LimitRun(at, count);
    count = WholeColumns(count);
    if (count <= 0) return;
    T* gap = m_Data + at;
    Destroy(gap, count);
    memmove(Bytes(gap), Bytes(gap + count), ByteCount(m_Count - at - count));
    m_Count -= count;
    m_Cols -= count / m_Rows;
}

template <typename T>
void DArray<T>::Reorder(int from, int to, int n) {
    if (m_Count == 0) return;
    const int64_t source = std::clamp<int64_t>(WholeColumns(from), 0, m_Count - 1);
    const int64_t target = std::clamp<int64_t>(WholeColumns(to), 0, m_Count - 1);
    if (source == target) return;
    const int64_t count =
        std::min(std::max<int64_t>(WholeColumns(n), 1), m_Count - std::max(source, target));
    T* run = static_cast<T*>(::malloc(ByteCount(count)));
    if (!run) return;
    memcpy(Bytes(run), Bytes(m_Data + source), ByteCount(count));
    if (target < source) {
        memmove(Bytes(m_Data + target + count), Bytes(m_Data + target), ByteCount(source - target));
    } else {
        memmove(Bytes(m_Data + source), Bytes(m_Data + source + count), ByteCount(target - source));
    }
    memcpy(Bytes(m_Data + target), Bytes(run), ByteCount(count));
    ::free(Bytes(run));
}

template <typename T>
void DArray<T>::Sort(int (*cmp)(const void*, const void*)) {
    if (m_Count > 1 && cmp) qsort(Bytes(m_Data), static_cast<size_t>(m_Count), sizeof(T), cmp);
}

template <typename T>
bool DArray<T>::SwapData(DArray& other) {
    if (this == &other) return false;
    std::swap(m_Data, other.m_Data);
    std::swap(m_Capacity, other.m_Capacity);
    std::swap(m_Count, other.m_Count);
    std::swap(m_Cols, other.m_Cols);
    m_Rows = other.m_Rows;
    return true;
}

// The family of plain elements lives in the library. Classes join where they are defined.
extern template class DArray<unsigned char>;
extern template class DArray<short>;
extern template class DArray<int>;
extern template class DArray<long>;
extern template class DArray<float>;
extern template class DArray<double>;
extern template class DArray<bool>;
extern template class DArray<void*>;
