/// A plain model of DString for the fuzz targets: blocks are shared pointers, texts standard
/// strings, and every search is written out byte by byte.
#pragma once

#include <limits.h>
#include <stdint.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

constexpr int None = INT_MAX;

inline char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

inline std::string Lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), LowerAscii);
    return text;
}

/// What the C string calls see of a text from `start` on.
inline std::string CText(std::string_view text, size_t start = 0) {
    return std::string(text.substr(start, text.find('\0', start) - start));
}

inline int BlockBytes(size_t n) { return 32 * ((static_cast<int>(n) + 25) / 32) + 32; }

/// One string: null, the shared empty block, or an owner of a block.
class TextModel {
public:
    struct Block {
        std::string m_Text;
        int m_Alloc;
    };

    TextModel() = default;
    explicit TextModel(const std::string& text) { Renew(text, BlockBytes(text.size())); }
    static TextModel SharedEmpty() {
        TextModel model;
        model.m_IsShared = true;
        return model;
    }
    static TextModel Own(const std::string& text, int alloc) {
        TextModel model;
        model.Renew(text, alloc);
        return model;
    }

    bool IsNull() const { return !m_Block && !m_IsShared; }
    bool IsUnset() const { return !m_Block; }
    int Refs() const {
        return m_Block ? static_cast<int>(m_Block.use_count()) : m_IsShared ? -1 : 0;
    }
    int Alloc() const { return m_Block ? m_Block->m_Alloc : 0; }
    const std::string& Text() const {
        static const std::string none;
        return m_Block ? m_Block->m_Text : none;
    }
    int Length() const { return static_cast<int>(Text().size()); }
    std::string& Shared() { return m_Block->m_Text; }

    /// ReAlloc; new bytes are "?".
    void ReAlloc(int n) {
        const size_t size = static_cast<size_t>(std::max(n, 0));
        std::string text = Text();
        text.resize(size, '?');
        Store(text);
    }
    /// A text that goes into the block if that is unshared and has room, else into a new one.
    void Store(const std::string& text) {
        const int wanted = BlockBytes(text.size());
        if (m_Block && Refs() == 1 && wanted <= Alloc()) {
            m_Block->m_Text = text;
        } else {
            Renew(text, wanted);
        }
    }
    void Append(const std::string& text) {
        if (!text.empty()) Store(Text() + text);
    }
    /// Room behind the text is reserved before something is written there.
    void AppendReserved(const std::string& text, int room) {
        const std::string whole = Text() + text;
        ReAlloc(Length() + room);
        m_Block->m_Text = whole;
    }
    void Adopt(int alloc) {
        if (m_Block) m_Block->m_Alloc = alloc;
    }

    // Parts

    TextModel Part(int start, int n) const {
        const std::string text = Text();
        if (text.empty()) return SharedEmpty();
        const size_t from = start < 0 ? text.size() : static_cast<size_t>(start);
        if (from >= text.size()) return TextModel(std::string());
        return TextModel(text.substr(from, static_cast<size_t>(std::max(n, 0))));
    }
    TextModel WholeOrEmpty(bool whole) const { return whole && !IsNull() ? *this : SharedEmpty(); }

    // Searching

    int Find(char c, int start) const {
        if (!IsInside(start)) return None;
        const std::string text = Text();
        for (size_t i = static_cast<size_t>(start);; ++i) {
            const char here = i < text.size() ? text[i] : '\0';
            if (here == c) return static_cast<int>(i);
            if (here == '\0') return None;
        }
    }
    int Find(const std::string& pattern, int start) const {
        return IsInside(start) ? At(CText(Text(), static_cast<size_t>(start)).find(pattern), start)
                               : None;
    }
    int FindI(const std::string& pattern, int start) const {
        if (!IsInside(start)) return None;
        return At(Lowered(CText(Text(), static_cast<size_t>(start))).find(Lowered(pattern)), start);
    }
    int RFind(char c, int start) const {
        const std::string text = Text();
        if (text.empty() || start < 0) return None;
        if (start == None) return At((CText(text) + '\0').rfind(c), 0);
        return At(text.rfind(c, static_cast<size_t>(start)), 0);
    }
    int RFind(const std::string& pattern, int start) const {
        return start < 0 ? None : At(Text().rfind(pattern, static_cast<size_t>(start)), 0);
    }
    int FindFirstOf(const std::string& set, int start) const {
        if (!IsInside(start)) return None;
        return At(CText(Text(), static_cast<size_t>(start)).find_first_of(set), start);
    }
    int FindFirstNotOf(const std::string& set, int start) const {
        if (!IsInside(start)) return None;
        return At(CText(Text(), static_cast<size_t>(start)).find_first_not_of(set), start);
    }
    bool EndsWith(const std::string& tail) const {
        const std::string text = Text();
        if (tail.size() > text.size()) return false;
        return Lowered(CText(text, text.size() - tail.size())) == Lowered(CText(tail));
    }

    // Replacing

    /// `ignoreCase` chooses ReplaceI.
    TextModel Replaced(const std::string& old, const std::string& with, bool all, bool ignoreCase,
                       int* count) const {
        if (IsNull()) return TextModel(std::string());
        std::string rest = CText(Text());
        std::string result;
        int replaced = 0;
        while (!old.empty() && (all || replaced == 0)) {
            const size_t found = ignoreCase ? Lowered(rest).find(Lowered(old)) : rest.find(old);
            if (found == std::string::npos) break;
            result += rest.substr(0, found) + with;
            rest = rest.substr(found + old.size());
            ++replaced;
        }
        const bool counts = ignoreCase || replaced > 0 || CText(Text()).empty();
        if (count && counts) *count = replaced;
        if (replaced > 0) return TextModel(result + rest);
        return ignoreCase || !CText(Text()).empty() ? *this : TextModel(std::string());
    }

private:
    bool IsInside(int start) const { return start >= 0 && start < Length(); }
    static int At(size_t found, int start) {
        return found == std::string::npos ? None : static_cast<int>(found) + start;
    }
    void Renew(const std::string& text, int alloc) {
        m_Block = std::make_shared<Block>(Block{text, alloc});
        m_IsShared = false;
    }

    std::shared_ptr<Block> m_Block;
    bool m_IsShared = false;
};
