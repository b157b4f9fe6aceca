// DString's memory: text blocks, sharing, construction, assignment and concatenation.
#define TARSEL_ALSO_EMITTED __attribute__((used))
#include "types/DString.h"

#include <stdint.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <new>

#include "types/MemoryWatch.h"

// Constant-initialised, so that all of these are ready before the first static constructor of the
// process and live past its last destructor.
constinit const int npos = std::numeric_limits<int>::max();
constinit const char* const LDelim = "\r\n";
constinit const int LenLD = 2;
constinit const DTextBlock DEmpty = {-1, 0, 0, {}};
constinit const char* const DEmptyString = DEmpty.m_Text;
constinit char* DString::m_pFreeList = nullptr;
constinit long RefusedBlocks = 0;

namespace {

// DStringArray::Join copies 16 characters at once out of every block but the shared empty one.
constexpr long SmallestBlock = 32;
constexpr long LargestBlock = std::numeric_limits<int>::max();

// The formula is keyed to the free list: texts of up to 6 characters take its 32-byte blocks.
constexpr long BlockSize(int n) {
    return SmallestBlock * ((static_cast<long>(n) + 25) / SmallestBlock) + SmallestBlock;
}

// The storage behind a block of `size` bytes. Long blocks have room to grow to, so that a text that
// grows by single appends is copied now and then, and not at each block size.
constexpr long StorageSize(long size) {
    constexpr long SmallestWithRoom = 256;
    if (size < SmallestWithRoom) return size;
    const long step = static_cast<long>(std::bit_floor(static_cast<unsigned long>(size))) / 2;
    return (size + step - 1) & -step;
}

// Null where memory is refused. Kept out of the way of short blocks, which come off the free list.
char* NewStorage(long size) {
    char* storage = size > LargestBlock
                        ? nullptr
                        : new (std::nothrow) char[static_cast<size_t>(StorageSize(size))];
    if (!storage) ++RefusedBlocks;
    return storage;
}

}  // namespace

// ---- Blocks

inline char* DString::NewBlock(long size) {
    char* text = m_pFreeList;
    if (size == SmallestBlock && text) {
        memcpy(&m_pFreeList, text, sizeof m_pFreeList);
    } else {
        char* block = NewStorage(size);
        if (!block) return nullptr;
        text = block + HeaderSize;
    }
    DTextBlock* header = reinterpret_cast<DTextBlock*>(text - HeaderSize);
    header->m_Refs = 1;
    header->m_Alloc = static_cast<int>(size);
    return text;
}

void DString::FreeBlock(char* text) {
    char* block = text - HeaderSize;
    if (reinterpret_cast<DTextBlock*>(block)->m_Alloc != SmallestBlock) {
        delete[] block;
        return;
    }
    // The character area is not aligned for a pointer.
    memcpy(text, &m_pFreeList, sizeof m_pFreeList);
    m_pFreeList = text;
}

void DString::SetLength(int n) {
    Block()->m_Length = n;
    m_Text[n] = '\0';
}

// Whether `n` characters have their place where the text stands; if so, the block has their size.
// The shared empty block has no storage, so that nothing fits it.
inline bool DString::Fits(int n) {
    if (!m_Text || Block()->m_Refs > 1) return false;
    const long size = BlockSize(n);
    if (size <= Block()->m_Alloc) return true;
    if (size > LargestBlock || size > StorageSize(Block()->m_Alloc)) return false;
    Block()->m_Alloc = static_cast<int>(size);
    return true;
}

int DString::GetRefs() const { return m_Text ? Block()->m_Refs : 0; }

int DString::GetAllocLength() const { return m_Text ? Block()->m_Alloc : 0; }

bool DString::ReAlloc(int n) {
    n = std::max(n, 0);
    if (!Fits(n)) {
        char* text = NewBlock(BlockSize(n));
        if (!text) return false;
        if (m_Text) memcpy(text, m_Text, static_cast<size_t>(std::min(n, GetLength())));
        Release();
        m_Text = text;
    }
    SetLength(n);
    return true;
}

char* DString::GetBuffer(int n) { return ReAlloc(n) ? m_Text : nullptr; }

void DString::Truncate(int n) { ReAlloc(n); }

void DString::TruncateBy(int n) {
    if (n > GetLength()) return;
    Truncate(GetLength() - std::max(n, 0));
}

void DString::AllocCopy(int n, const char* src) {
    if (src == m_Text) return;
    n = src ? std::max(n, 0) : 0;
    if (Fits(n)) {
        memmove(m_Text, src ? src : DEmptyString, static_cast<size_t>(n));
    } else {
        char* text = NewBlock(BlockSize(n));
        if (!text) return;
        // src may be a piece of the old text, so that is released last.
        memcpy(text, src ? src : DEmptyString, static_cast<size_t>(n));
        Release();
        m_Text = text;
    }
    SetLength(n);
}

DString& DString::Copy(const DString& other) {
    AllocCopy(other.GetLength(), other.m_Text);
    return *this;
}

void DString::ConcatSelf(int n, const char* src) {
    if (n < 1 || !src) return;
    const int length = GetLength();
    if (n <= npos - length && Fits(length + n)) {
        memmove(m_Text + length, src, static_cast<size_t>(n));
        SetLength(length + n);
    } else {
        Outgrow(n, src);
    }
}

// Appends in a new block. Kept out of the way of appending in place.
[[gnu::noinline]] void DString::Outgrow(int n, const char* src) {
    const int length = GetLength();
    if (n > npos - length) {
        ++RefusedBlocks;
        return;
    }
    char* text = NewBlock(BlockSize(length + n));
    if (!text) return;
    memcpy(text, *this, static_cast<size_t>(length));
    memcpy(text + length, src, static_cast<size_t>(n));
    Release();
    m_Text = text;
    SetLength(length + n);
}

void DString::SetChar(int i, char c) {
    if (i < 0 || i >= GetLength()) return;
    if (GetRefs() > 1 && !ReAlloc(GetLength())) return;
    m_Text[i] = c;
}

// ---- Construction and assignment

// From null, since `s` may be the shared empty text, and the block is to be the string's own.
DString::DString(const char* s, int n) : m_Text(nullptr) {
    n = s ? static_cast<int>(strnlen(s, static_cast<size_t>(std::max(n, 0)))) : 0;
    AllocCopy(n, s ? s : "");
}

DString::DString(char c, int n) : DString() {
    n = std::max(n, 0);
    if (ReAlloc(n)) memset(m_Text, c, static_cast<size_t>(n));
}

DString::DString(const DString& s, int start, int n) : DString() {
    const int length = s.GetLength();
    if (length == 0) return;
    if (start < 0) start = length;
    start = std::min(start, length);
    n = std::min(std::max(n, 0), length - start);
    char* text = NewBlock(BlockSize(n));
    if (!text) return;
    memcpy(text, s.m_Text + start, static_cast<size_t>(n));
    m_Text = text;
    SetLength(n);
}

DString& DString::operator=(const char* s) {
    AllocCopy(TextLength(s), s);
    return *this;
}

DString& DString::operator=(char c) {
    AllocCopy(1, &c);
    return *this;
}

// ---- Concatenation

DString operator+(const DString& left, const DString& right) {
    DString result(left);
    result += right;
    return result;
}

DString operator+(const DString& left, char right) {
    DString result(left);
    result += right;
    return result;
}

DString operator+(const DString& left, const char* right) {
    DString result(left);
    result += right;
    return result;
}

DString operator+(char left, const DString& right) {
    DString result(left);
    result += right;
    return result;
}

DString operator+(const char* left, const DString& right) {
    DString result(left);
    result += right;
    return result;
}
