/// Golden files put together by hand, and what is asked of every reader of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/Support.h"

/// The length of a date as Now gives it.
constexpr int DateLength = 19;

inline std::string Floats(const std::vector<float>& values) {
    std::string bytes;
    for (const float value : values)
        bytes += Float32(value);
    return bytes;
}

/// The record of a text: a length of four bytes, then the text.
inline std::string LongText(const std::string& text) {
    return Int32(static_cast<long>(text.size())) + text;
}

/// `bytes` with `piece` written over them at `offset`, at or beyond whose end they grow.
inline std::string Overwritten(std::string bytes, size_t offset, const std::string& piece) {
    if (bytes.size() < offset + piece.size()) bytes.resize(offset + piece.size());
    return bytes.replace(offset, piece.size(), piece);
}

/// A number of an object, and the offset behind its bytes in a file.
template <typename T>
struct FieldEnd {
    size_t m_End;
    std::function<double(const T&)> m_Value;
};

/// Reads every beginning of a file into a used object: a field takes the file's value only where
/// all of its bytes are there, and keeps the used one otherwise.
template <typename T>
void ExpectWholeFieldsOnly(const std::string& bytes, const std::vector<FieldEnd<T>>& fields,
                           const std::function<void(const std::string&, T&)>& read,
                           const std::function<void(T&)>& use) {
    T used;
    use(used);
    T whole;
    read(bytes, whole);
    for (size_t length = 0; length <= bytes.size(); ++length) {
        T object;
        use(object);
        read(bytes.substr(0, length), object);
        for (const auto& [end, value] : fields) {
            EXPECT_NE(value(used), value(whole)) << end;
            EXPECT_EQ(value(object), value(length < end ? used : whole)) << length << ", " << end;
        }
    }
}
