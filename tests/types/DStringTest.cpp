// DString's memory, sharing, construction, parts and changes in place.
#include "types/DString.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <string.h>

#include <memory>
#include <type_traits>
#include <vector>

#include "support/Support.h"
#include "tests/types/GermanLocale.h"
#include "tests/types/SampleStrings.h"
#include "types/MemoryWatch.h"

#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

// The three integers ahead of the characters.
struct Header {
    int m_Refs;
    int m_Length;
    int m_Alloc;
    bool operator==(const Header&) const = default;
};

Header HeaderOf(const DString& text) {
    Header header;
    memcpy(&header, Place(text) - sizeof header, sizeof header);
    return header;
}

// Bytes that the program has from the system's allocator.
size_t BytesInUse() {
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

void ExpectOwnEmptyBlock(const DString& text) {
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_EQ(text.GetRefs(), 1);
    EXPECT_EQ(text.GetAllocLength(), 32);
}

void ExpectSharedEmptyBlock(const DString& text) { EXPECT_EQ(Place(text), DEmptyString); }

// Made before every ordinary static object, to see what the library offers there.
struct EarlyObject {
    EarlyObject()
        : m_Text("ab"), m_Appended(m_Text + "cd"), m_Mark(npos), m_Part(m_Text.Mid(-1, 1)) {}
    DString m_Text;
    DString m_Appended;
    int m_Mark;
    DString m_Part;
};

__attribute__((init_priority(101))) EarlyObject mEarly;

}  // namespace

// ---- What the class looks like from outside

static_assert(sizeof(DString) == sizeof(char*));
static_assert(std::is_convertible_v<const char*, DString>);
static_assert(std::is_convertible_v<const DString&, const char*>);
static_assert(!std::is_convertible_v<char, DString>);
static_assert(!std::is_convertible_v<int, DString>);
static_assert(!std::is_convertible_v<unsigned int, DString>);
static_assert(!std::is_convertible_v<float, DString>);
static_assert(!std::is_convertible_v<double, DString>);
static_assert(!std::is_convertible_v<bool, DString>);
static_assert(!std::is_convertible_v<long, DString>);
static_assert(!std::is_convertible_v<void*, DString>);

TEST(DStringConstants, HaveTheirValues) {
    EXPECT_EQ(npos, 2147483647);
    EXPECT_EQ(LenLD, 2);
    EXPECT_STREQ(LDelim, "\r\n");
}

TEST(DStringConstants, SharedEmptyBlockHasMinusOneOwnerAndNoSize) {
    EXPECT_EQ(DEmpty.m_Refs, -1);
    EXPECT_EQ(DEmpty.m_Length, 0);
    EXPECT_EQ(DEmpty.m_Alloc, 0);
    EXPECT_EQ(DEmpty.m_Text[0], '\0');
    EXPECT_EQ(DEmptyString, DEmpty.m_Text);
}

TEST(DStringConstants, AreReadyBeforeTheFirstStaticConstructor) {
    EXPECT_EQ(Text(mEarly.m_Text), "ab");
    EXPECT_EQ(Text(mEarly.m_Appended), "abcd");
    EXPECT_EQ(mEarly.m_Mark, 2147483647);
    ExpectSharedEmptyBlock(mEarly.m_Part);
}

// ---- Blocks

TEST(DStringBlock, HeaderStandsAheadOfTheTextAndAZeroByteBehindIt) {
    const DString text("abc");
    EXPECT_EQ(HeaderOf(text), (Header{1, 3, 32}));
    EXPECT_EQ(Place(text)[3], '\0');
}

TEST(DStringBlock, SizesAreMultiplesOf32) {
    const auto sizeFor = [](int length) { return DString('x', length).GetAllocLength(); };
    EXPECT_EQ(sizeFor(0), 32);
    EXPECT_EQ(sizeFor(6), 32);
    EXPECT_EQ(sizeFor(7), 64);
    EXPECT_EQ(sizeFor(38), 64);
    EXPECT_EQ(sizeFor(39), 96);
    EXPECT_EQ(sizeFor(70), 96);
    EXPECT_EQ(sizeFor(71), 128);
    EXPECT_EQ(sizeFor(1000), 32 * (1025 / 32) + 32);
}

TEST(DStringBlock, FreedBlockOf32BytesServesTheNextShortText) {
    DString first("abcdef");
    DString second("ghijkl");
    const char* firstPlace = Place(first);
    const char* secondPlace = Place(second);
    first.Release();
    second.Release();
    const DString third("x");
    const DString fourth("");
    EXPECT_EQ(Place(third), secondPlace);
    EXPECT_EQ(Place(fourth), firstPlace);
    EXPECT_EQ(HeaderOf(third), (Header{1, 1, 32}));
    EXPECT_EQ(HeaderOf(fourth), (Header{1, 0, 32}));
}

TEST(DStringBlock, SixCharactersComeFromTheFreeListAndSevenDoNot) {
    constexpr int Strings = 1000;
    std::vector<DString> texts;
    texts.reserve(Strings);
    for (int i = 0; i < Strings; ++i)
        texts.emplace_back('x', 6);
    texts.clear();

    const size_t before = BytesInUse();
    for (int i = 0; i < Strings; ++i)
        texts.emplace_back('x', 6);
    EXPECT_EQ(BytesInUse(), before);
    texts.clear();
    EXPECT_EQ(BytesInUse(), before);

    for (int i = 0; i < Strings; ++i)
        texts.emplace_back('x', 7);
    EXPECT_GE(BytesInUse(), before + Strings * 64);
    texts.clear();
    EXPECT_LT(BytesInUse(), before + Strings * 64 / 10);
}

TEST(DStringBlock, BlockThatOnceHeldALongTextIsNotForTheFreeList) {
    DString grown('x', 50);
    grown.Truncate(1);
    EXPECT_EQ(grown.GetAllocLength(), 96);
    const char* place = Place(grown);
    const DString kept("keep");  // takes what the list holds now, if anything
    grown.Release();
    const DString next("next");
    EXPECT_NE(Place(next), place);
}

// ---- Release and sharing

TEST(DStringRelease, LastOwnerBecomesNull) {
    DString text("abc");
    text.Release();
    EXPECT_EQ(text.GetRefs(), 0);
    EXPECT_EQ(text.GetAllocLength(), 0);
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text, "");
}

TEST(DStringRelease, WithOwnersLeftThePointerStays) {
    const DString other("abc");
    // Storage without a destructor: a string that gave up its share must not be destroyed.
    alignas(DString) char storage[sizeof(DString)];
    DString* text = std::construct_at(reinterpret_cast<DString*>(storage), other);
    EXPECT_EQ(other.GetRefs(), 2);
    text->Release();
    EXPECT_EQ(other.GetRefs(), 1);
    EXPECT_EQ(Place(*text), Place(other));
}

TEST(DStringRelease, OfNullAndOfTheSharedEmptyBlockDoesNothing) {
    DString null = NullString();
    null.Release();
    EXPECT_EQ(null.GetRefs(), 0);
    DString empty;
    empty.Release();
    ExpectSharedEmptyBlock(empty);
    EXPECT_EQ(DEmpty.m_Refs, -1);
}

TEST(DStringRelease, NullStringTakesTextAgain) {
    DString text = NullString();
    text = "again";
    EXPECT_EQ(Text(text), "again");
    text.Release();
    text = DString("shared");
    EXPECT_EQ(Text(text), "shared");
    text.Release();
    text += "appended";
    EXPECT_EQ(Text(text), "appended");
    text.Release();
    text << 12;
    EXPECT_EQ(Text(text), "12");
}

TEST(DStringSharing, CopyAndAssignmentShareTheBlock) {
    const DString text("abc");
    const DString copy(text);
    DString assigned("old");
    assigned = text;
    EXPECT_EQ(Place(copy), Place(text));
    EXPECT_EQ(Place(assigned), Place(text));
    EXPECT_EQ(text.GetRefs(), 3);
}

TEST(DStringSharing, CountFallsWhenAnOwnerDiesOrTakesOtherText) {
    const DString text("abc");
    {
        DString first(text);
        const DString second(text);
        EXPECT_EQ(text.GetRefs(), 3);
        first = DString("other");
        EXPECT_EQ(text.GetRefs(), 2);
    }
    EXPECT_EQ(text.GetRefs(), 1);
}

TEST(DStringSharing, SelfAssignmentDoesNothing) {
    DString text("abc");
    const char* place = Place(text);
    const DString& alias = text;
    text = alias;
    EXPECT_EQ(Place(text), place);
    EXPECT_EQ(text.GetRefs(), 1);
    EXPECT_EQ(Text(text), "abc");
}

TEST(DStringSharing, SharedEmptyBlockIsNeverCounted) {
    const DString first;
    const DString second(first);
    DString third("x");
    third = second;
    ExpectSharedEmptyBlock(second);
    ExpectSharedEmptyBlock(third);
    EXPECT_EQ(third.GetRefs(), -1);
    EXPECT_EQ(DEmpty.m_Refs, -1);
}

TEST(DStringSharing, CopyOfNullIsNull) {
    const DString null = NullString();
    DString assigned("x");
    assigned = null;
    EXPECT_EQ(DString(null).GetRefs(), 0);
    EXPECT_EQ(assigned.GetRefs(), 0);
}

TEST(DStringSharing, SetCharParts) {
    DString text("abc");
    const DString copy(text);
    EXPECT_EQ(text.GetRefs(), 2);
    text.SetChar(1, 'X');
    EXPECT_EQ(Text(text), "aXc");
    EXPECT_EQ(Text(copy), "abc");
    EXPECT_EQ(text.GetRefs(), 1);
    EXPECT_EQ(copy.GetRefs(), 1);
}

TEST(DStringSharing, EveryWriterPartsFromTheOtherOwners) {
    const DString original("a.b ");
    const auto textAfter = [&original](auto write) {
        DString text(original);
        write(text);
        EXPECT_NE(Place(text), Place(original));
        EXPECT_EQ(original.GetRefs(), 1);
        EXPECT_EQ(Text(original), "a.b ");
        return Text(text);
    };
    EXPECT_EQ(textAfter([](DString& t) { t.ReAlloc(4); }), "a.b ");
    EXPECT_EQ(textAfter([](DString& t) { t.GetBuffer(4)[0] = 'x'; }), "x.b ");
    EXPECT_EQ(textAfter([](DString& t) { t.Truncate(1); }), "a");
    EXPECT_EQ(textAfter([](DString& t) { t.TruncateBy(1); }), "a.b");
    EXPECT_EQ(textAfter([](DString& t) { t.AllocCopy(1, "z"); }), "z");
    EXPECT_EQ(textAfter([](DString& t) { t.ConcatSelf(1, "z"); }), "a.b z");
    EXPECT_EQ(textAfter([](DString& t) { t += DString("z"); }), "a.b z");
    EXPECT_EQ(textAfter([](DString& t) { t = "new"; }), "new");
    EXPECT_EQ(textAfter([](DString& t) { t = 'n'; }), "n");
    EXPECT_EQ(textAfter([](DString& t) { t << 7; }), "a.b 7");
    EXPECT_EQ(textAfter([](DString& t) { t.AddFormatted(7, "%i"); }), "a.b 7");
    EXPECT_EQ(textAfter([](DString& t) { t.ToUpper(); }), "A.B ");
    EXPECT_EQ(textAfter([](DString& t) { t.ToLower(); }), "a.b ");
    EXPECT_EQ(textAfter([](DString& t) { t.RTrim(); }), "a.b");
    EXPECT_EQ(textAfter([](DString& t) { t.RemoveExt(); }), "a");
}

TEST(DStringSharing, WritersNeverTouchTheSharedEmptyBlock) {
    const auto textAfter = [](auto write) {
        DString text;
        write(text);
        EXPECT_NE(Place(text), DEmptyString);
        EXPECT_EQ(text.GetRefs(), 1);
        EXPECT_EQ(DEmpty.m_Length, 0);
        EXPECT_EQ(DEmpty.m_Text[0], '\0');
        return Text(text);
    };
    EXPECT_EQ(textAfter([](DString& t) { t.ReAlloc(0); }), "");
    EXPECT_EQ(textAfter([](DString& t) { t.GetBuffer(1)[0] = 'x'; }), "x");
    EXPECT_EQ(textAfter([](DString& t) { t.Truncate(0); }), "");
    EXPECT_EQ(textAfter([](DString& t) { t.TruncateBy(0); }), "");
    EXPECT_EQ(textAfter([](DString& t) { t.AllocCopy(1, "z"); }), "z");
    EXPECT_EQ(textAfter([](DString& t) { t.ConcatSelf(1, "z"); }), "z");
    EXPECT_EQ(textAfter([](DString& t) { t << true; }), "True");
    EXPECT_EQ(textAfter([](DString& t) { t.ToUpper(); }), "");
    EXPECT_EQ(textAfter([](DString& t) { t.ToLower(); }), "");
    EXPECT_EQ(textAfter([](DString& t) { t.RTrim(); }), "");
}

// ---- Empty texts

TEST(DStringEmpty, EveryStateIsReadAsNoText) {
    for (const DString& empty : EmptyStrings()) {
        SCOPED_TRACE(empty.GetRefs());
        EXPECT_EQ(empty.GetLength(), 0);
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_STREQ(empty, "");
        EXPECT_EQ(empty[0], '\0');
        EXPECT_EQ(empty + "x", "x");
        EXPECT_EQ("x" + empty, "x");
        EXPECT_EQ(DString("x") + empty, "x");
        EXPECT_EQ(DString("x") == empty, false);
    }
}

TEST(DStringEmpty, EveryStateHasOnlyEmptyParts) {
    for (const DString& empty : EmptyStrings()) {
        SCOPED_TRACE(empty.GetRefs());
        EXPECT_TRUE(empty.Mid(0, npos).IsEmpty());
        EXPECT_TRUE(empty.Left(3).IsEmpty());
        EXPECT_TRUE(empty.Right(3).IsEmpty());
        EXPECT_TRUE(empty.AfterFirst('.', true).IsEmpty());
        EXPECT_TRUE(empty.AfterLast('.', true).IsEmpty());
        EXPECT_TRUE(empty.BeforeFirst('.', true).IsEmpty());
        EXPECT_TRUE(empty.BeforeLast('.', true).IsEmpty());
        EXPECT_TRUE(empty.Trim().IsEmpty());
        EXPECT_TRUE(empty.LTrim().IsEmpty());
        EXPECT_TRUE(empty.Despace().IsEmpty());
        EXPECT_TRUE(DString(empty, 0, npos).IsEmpty());
    }
}

TEST(DStringEmpty, EveryStateCanBeChangedInPlace) {
    for (const DString& empty : EmptyStrings()) {
        SCOPED_TRACE(empty.GetRefs());
        EXPECT_TRUE(DString(empty).ToLower().IsEmpty());
        EXPECT_TRUE(DString(empty).ToUpper().IsEmpty());
        EXPECT_TRUE(DString(empty).RTrim().IsEmpty());
        EXPECT_TRUE(DString(empty).RemoveExt().IsEmpty());
        EXPECT_TRUE(DString(empty).LFtoCRLF().IsEmpty());
        EXPECT_EQ(DString(empty) += 'x', "x");
        EXPECT_EQ(DString(empty) << 5, "5");
        EXPECT_EQ(DString(empty).AddFormatted(5, "%i"), "5");
        EXPECT_EQ(DString(empty).Copy("x"), "x");
        DString text(empty);
        text.SetChar(0, 'x');
        text.TruncateBy(1);
        EXPECT_TRUE(text.IsEmpty());
        text.GetBuffer(2)[0] = 'g';
        text.Truncate(1);
        EXPECT_EQ(text, "g");
    }
}

// ---- Construction

TEST(DStringConstruction, DefaultIsTheSharedEmptyBlock) { ExpectSharedEmptyBlock(DString()); }

TEST(DStringConstruction, TakesAtMostTheGivenBytes) {
    EXPECT_EQ(Text(DString("abc", 2)), "ab");
    EXPECT_EQ(Text(DString("abc", npos)), "abc");
    EXPECT_EQ(Text(DString("abc", 4)), "abc");
    EXPECT_EQ(Text(DString("abc")), "abc");
    EXPECT_EQ(Text(DString("abc", -1)), "");
}

TEST(DStringConstruction, ReadsNoFurtherThanTheGivenBytes) {
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(Text(DString(unterminated, 3)), "abc");
}

TEST(DStringConstruction, FromTextAlwaysMakesABlockOfItsOwn) {
    ExpectOwnEmptyBlock(DString("", npos));
    ExpectOwnEmptyBlock(DString(static_cast<const char*>(nullptr), npos));
    ExpectOwnEmptyBlock(DString("abc", 0));
    ExpectOwnEmptyBlock(DString(DEmptyString, npos));
    const DString text("abc");
    EXPECT_NE(Place(DString(Place(text))), Place(text));
}

TEST(DStringConstruction, RepeatsACharacter) {
    EXPECT_EQ(Text(DString('x', 3)), "xxx");
    EXPECT_EQ(Text(DString('x')), "x");
    ExpectOwnEmptyBlock(DString('x', 0));
    ExpectOwnEmptyBlock(DString('x', -3));
    EXPECT_EQ(Text(DString('\0', 2)), std::string(2, '\0'));
}

TEST(DStringConstruction, SubstringIsCutToTheText) {
    const DString text("abcdef");
    EXPECT_EQ(Text(DString(text, 2, 3)), "cde");
    EXPECT_EQ(Text(DString(text, 2, npos)), "cdef");
    EXPECT_EQ(Text(DString(text, 2, npos - 1)), "cdef");
    EXPECT_EQ(Text(DString(text, 2, 5)), "cdef");
    EXPECT_EQ(Text(DString(text, 6, 1)), "");
    EXPECT_EQ(Text(DString(text, npos, npos)), "");
    EXPECT_EQ(Text(DString(text, -1, 2)), "");
    EXPECT_EQ(Text(DString(text, 1, -2)), "");
}

TEST(DStringConstruction, SubstringHasABlockOfItsOwnUnlessTheSourceIsEmpty) {
    const DString text("abc");
    const DString whole(text, 0, npos);
    EXPECT_EQ(Text(whole), "abc");
    EXPECT_NE(Place(whole), Place(text));
    EXPECT_EQ(text.GetRefs(), 1);
    ExpectOwnEmptyBlock(DString(text, 3, 1));
    for (const DString& empty : EmptyStrings())
        ExpectSharedEmptyBlock(DString(empty, 0, 1));
}

TEST(DStringConstruction, SubstringKeepsZeroBytes) {
    const DString text = StringOf(std::string("a\0b\0c", 5));
    EXPECT_EQ(Text(DString(text, 1, 3)), std::string("\0b\0", 3));
}

// ---- Assignment

TEST(DStringAssignment, OfTextReusesAnUnsharedBlock) {
    DString text("abcdef");
    const char* place = Place(text);
    text = "xyz";
    EXPECT_EQ(Text(text), "xyz");
    EXPECT_EQ(Place(text), place);
    text = 'q';
    EXPECT_EQ(Text(text), "q");
    EXPECT_EQ(Place(text), place);
    text = static_cast<const char*>(nullptr);
    EXPECT_EQ(Text(text), "");
    EXPECT_EQ(Place(text), place);
}

TEST(DStringAssignment, TakesAPieceOfItself) {
    DString text("abcdef");
    text = Place(text) + 2;
    EXPECT_EQ(Text(text), "cdef");
    text = Place(text);
    EXPECT_EQ(Text(text), "cdef");

    DString shared(text);
    shared = Place(shared) + 1;
    EXPECT_EQ(Text(shared), "def");
    EXPECT_EQ(Text(text), "cdef");
}

// ---- Memory operations

TEST(DStringReAlloc, KeepsTheBlockWhileItIsBigEnough) {
    DString text('x', 38);
    const char* place = Place(text);
    EXPECT_TRUE(text.ReAlloc(2));
    EXPECT_EQ(Text(text), "xx");
    EXPECT_EQ(text.GetAllocLength(), 64);
    EXPECT_TRUE(text.ReAlloc(38));
    EXPECT_EQ(text.GetLength(), 38);
    EXPECT_EQ(Place(text)[38], '\0');
    EXPECT_EQ(Place(text), place);
}

TEST(DStringReAlloc, TakesANewBlockBeyondIt) {
    DString text("abcdef");
    EXPECT_TRUE(text.ReAlloc(7));
    EXPECT_EQ(text.GetAllocLength(), 64);
    EXPECT_EQ(text.GetLength(), 7);
    EXPECT_EQ(Text(text).substr(0, 6), "abcdef");
    EXPECT_EQ(Place(text)[7], '\0');
}

TEST(DStringReAlloc, OfASharedTextTakesTheSmallestBlock) {
    DString text('x', 100);
    const DString copy(text);
    EXPECT_TRUE(text.ReAlloc(3));
    EXPECT_EQ(Text(text), "xxx");
    EXPECT_EQ(text.GetAllocLength(), 32);
    EXPECT_EQ(copy.GetLength(), 100);
}

TEST(DStringReAlloc, NegativeLengthCountsAsZero) {
    DString text("abc");
    EXPECT_TRUE(text.ReAlloc(-5));
    ExpectOwnEmptyBlock(text);
}

TEST(DStringReAlloc, RefusedMemoryLeavesTheText) {
    DString text("abc");
    EXPECT_FALSE(text.ReAlloc(npos));
    EXPECT_EQ(text.GetBuffer(npos), nullptr);
    text.Truncate(npos);
    EXPECT_EQ(Text(text), "abc");
    EXPECT_TRUE(DString('x', npos).IsEmpty());
}

TEST(DStringGetBuffer, IsForDirectWritingAndCutBackWithTruncate) {
    DString text("abc");
    char* buffer = text.GetBuffer(10);
    EXPECT_EQ(text.GetLength(), 10);
    EXPECT_EQ(buffer, Place(text));
    EXPECT_EQ(buffer[10], '\0');
    memcpy(buffer + 3, "de", 2);
    text.Truncate(5);
    EXPECT_EQ(Text(text), "abcde");
}

TEST(DStringTruncate, AlsoGrows) {
    DString text("abc");
    text.Truncate(5);
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(Text(text).substr(0, 3), "abc");
    text.Truncate(-1);
    EXPECT_EQ(text.GetLength(), 0);
}

TEST(DStringTruncateBy, RemovesFromTheEndUnlessThatExceedsTheLength) {
    DString text("abc");
    text.TruncateBy(4);
    EXPECT_EQ(Text(text), "abc");
    text.TruncateBy(-1);
    EXPECT_EQ(Text(text), "abc");
    text.TruncateBy(npos);
    EXPECT_EQ(Text(text), "abc");
    text.TruncateBy(1);
    EXPECT_EQ(Text(text), "ab");
    text.TruncateBy(2);
    EXPECT_EQ(Text(text), "");
}

TEST(DStringAllocCopy, SetsTheTextToAnyBytes) {
    DString text("old");
    text.AllocCopy(3, "a\0b");
    EXPECT_EQ(Text(text), std::string("a\0b", 3));
    text.AllocCopy(-1, "abc");
    EXPECT_EQ(Text(text), "");
    text.AllocCopy(5, nullptr);
    ExpectOwnEmptyBlock(text);
}

TEST(DStringAllocCopy, FromItsOwnTextDoesNothing) {
    DString text("abcdef");
    const DString copy(text);
    text.AllocCopy(2, text);
    EXPECT_EQ(Text(text), "abcdef");
    EXPECT_EQ(copy.GetRefs(), 2);
}

TEST(DStringAllocCopy, TakesAPieceOfItself) {
    DString text("abcdef");
    text.AllocCopy(3, Place(text) + 1);
    EXPECT_EQ(Text(text), "bcd");

    DString shared("abcdef");
    const DString copy(shared);
    shared.AllocCopy(3, Place(shared) + 1);
    EXPECT_EQ(Text(shared), "bcd");
    EXPECT_EQ(Text(copy), "abcdef");
}

TEST(DStringCopy, IsPrivate) {
    const DString source("abc");
    DString text;
    EXPECT_EQ(&text.Copy(source), &text);
    EXPECT_EQ(Text(text), "abc");
    EXPECT_NE(Place(text), Place(source));
    EXPECT_EQ(source.GetRefs(), 1);
    text.Copy(NullString());
    ExpectOwnEmptyBlock(text);
}

TEST(DStringConcatSelf, AppendsBytes) {
    DString text("ab");
    text.ConcatSelf(2, "cdef");
    EXPECT_EQ(Text(text), "abcd");
    text.ConcatSelf(0, "x");
    text.ConcatSelf(-1, "x");
    text.ConcatSelf(1, nullptr);
    EXPECT_EQ(Text(text), "abcd");
    text.ConcatSelf(3, "\0e");
    EXPECT_EQ(Text(text), std::string("abcd\0e\0", 7));
}

TEST(DStringConcatSelf, AppendsItself) {
    DString text("abc");
    text += text;
    EXPECT_EQ(Text(text), "abcabc");
    text += text;
    EXPECT_EQ(Text(text), "abcabcabcabc");
    text += Place(text) + 9;
    EXPECT_EQ(Text(text), "abcabcabcabcabc");
    DString shared(text);
    shared += shared;
    EXPECT_EQ(shared.GetLength(), 30);
    EXPECT_EQ(text.GetLength(), 15);
}

TEST(DStringConcatSelf, AppendsPiecesOfItselfWhereverItsBlockEnds) {
    for (int length = 1; length < 1200; ++length) {
        std::string expected;
        for (int i = 0; i < length; ++i)
            expected += static_cast<char>('!' + i % 90);
        DString text(expected.c_str());
        text.ConcatSelf(length, text);
        EXPECT_EQ(Text(text), expected + expected);
        EXPECT_EQ(text.GetAllocLength(), 32 * ((2 * length + 25) / 32) + 32);
        text += Place(text) + 2 * length - 1;
        EXPECT_EQ(Text(text), expected + expected + expected.back());
        EXPECT_EQ(text.GetAllocLength(), 32 * ((2 * length + 1 + 25) / 32) + 32);
    }
}

TEST(DStringConcatSelf, TakesWhatAHostLeftBehindTheTextInItsBlock) {
    DString text;
    char* buffer = text.GetBuffer(26);
    for (int i = 0; i < 26; ++i)
        buffer[i] = static_cast<char>('A' + i);
    text.Truncate(0);
    text.ConcatSelf(10, buffer + 5);
    EXPECT_EQ(Text(text), "FGHIJKLMNO");
}

TEST(DStringConcatSelf, BeyondTheLargestTextIsRefusedAndCounted) {
    DString text("x");
    const MemoryWatch memory;
    text.ConcatSelf(npos, "y");
    EXPECT_EQ(Text(text), "x");
    EXPECT_FALSE(memory.Whole());
}

TEST(DStringConcatSelf, StaysInItsBlockUpToTheNextMultiple) {
    DString text("a");
    const char* place = Place(text);
    text += "bcdef";
    EXPECT_EQ(Place(text), place);
    text += 'g';
    EXPECT_EQ(Text(text), "abcdefg");
    EXPECT_EQ(text.GetAllocLength(), 64);
}

TEST(DStringSetChar, IgnoresIndexesOutsideTheText) {
    DString text("abc");
    text.SetChar(3, 'x');
    text.SetChar(npos, 'x');
    text.SetChar(-1, 'x');
    EXPECT_EQ(Text(text), "abc");
    text.SetChar(2, 'x');
    EXPECT_EQ(Text(text), "abx");
}

TEST(DStringIndex, GivesAZeroByteOutOfRange) {
    const DString text("abc");
    EXPECT_EQ(text[0], 'a');
    EXPECT_EQ(text[2], 'c');
    EXPECT_EQ(text[3], '\0');
    EXPECT_EQ(text[-1], '\0');
    EXPECT_EQ(text[npos], '\0');
}

// ---- Equality

TEST(DStringEquality, OfTwoStringsIgnoresCase) {
    EXPECT_TRUE(DString("Shot") == DString("sHOT"));
    EXPECT_FALSE(DString("Shot") == DString("Shots"));
    EXPECT_TRUE(DString("a") != DString("b"));
    EXPECT_FALSE(DString("a") != DString("A"));
}

TEST(DStringEquality, WithPlainTextHonoursCase) {
    EXPECT_TRUE(DString("Shot") == "Shot");
    EXPECT_FALSE(DString("Shot") == "shot");
    EXPECT_TRUE("Shot" == DString("Shot"));
    EXPECT_TRUE("shot" != DString("Shot"));
    EXPECT_TRUE(DString("Shot") != "shot");
}

TEST(DStringEquality, IsFalseForANullLeft) {
    EXPECT_FALSE(NullString() == NullString());
    EXPECT_FALSE(NullString() == DString());
    EXPECT_FALSE(NullString() == "");
    EXPECT_TRUE(NullString() != "");
    EXPECT_TRUE(NullString() != DString());
}

TEST(DStringEquality, NullRightCountsAsEmpty) {
    EXPECT_TRUE(DString() == NullString());
    EXPECT_TRUE(DString("") == DString());
    EXPECT_TRUE(DString("") == static_cast<const char*>(nullptr));
    EXPECT_FALSE(DString("a") == static_cast<const char*>(nullptr));
}

TEST(DStringEquality, ComparesLengthsAndThenUpToAZeroByte) {
    const DString text = StringOf(std::string("a\0b", 3));
    EXPECT_TRUE(text == StringOf(std::string("A\0c", 3)));
    EXPECT_FALSE(text == DString("a"));
    EXPECT_TRUE(text == "a");
}

// ---- Concatenation

TEST(DStringConcatenation, JoinsEveryKind) {
    const DString text("ab");
    EXPECT_EQ(Text(text + DString("cd")), "abcd");
    EXPECT_EQ(Text(text + 'c'), "abc");
    EXPECT_EQ(Text(text + "cd"), "abcd");
    EXPECT_EQ(Text('x' + text), "xab");
    EXPECT_EQ(Text("xy" + text), "xyab");
    EXPECT_EQ(Text(text + text), "abab");
    EXPECT_EQ(Text(text), "ab");
}

TEST(DStringConcatenation, EmptyRightSideLeavesAShareOfTheLeft) {
    const DString text("abc");
    EXPECT_EQ(Place(text + ""), Place(text));
    EXPECT_EQ(Place(text + static_cast<const char*>(nullptr)), Place(text));
    for (const DString& empty : EmptyStrings())
        EXPECT_EQ(Place(text + empty), Place(text));
}

TEST(DStringConcatenation, NullLeftTextCountsAsEmpty) {
    EXPECT_EQ(Text(static_cast<const char*>(nullptr) + DString("a")), "a");
    EXPECT_EQ(Text(NullString() + DString("a")), "a");
    EXPECT_EQ(Text(NullString() + 'a'), "a");
}

TEST(DStringConcatenation, AppendOperatorsReturnTheString) {
    DString text("a");
    EXPECT_EQ(&(text += 'b'), &text);
    EXPECT_EQ(&(text += "c"), &text);
    EXPECT_EQ(&(text += DString("d")), &text);
    EXPECT_EQ(Text(text), "abcd");
    EXPECT_EQ(Text(text += static_cast<const char*>(nullptr)), "abcd");
}

// ---- Parts

TEST(DStringMid, IsEmptyOutsideTheText) {
    const DString text("abcdef");
    EXPECT_EQ(Text(text.Mid(2, 3)), "cde");
    EXPECT_EQ(Text(text.Mid(2, npos)), "cdef");
    EXPECT_EQ(Text(text.Mid(2)), "cdef");
    ExpectOwnEmptyBlock(text.Mid(6, 1));
    ExpectSharedEmptyBlock(text.Mid(7, 1));
    ExpectSharedEmptyBlock(text.Mid(-1, 3));
    EXPECT_EQ(Text(text.Mid(3, -1)), "");
    EXPECT_EQ(Text(text.Mid(1, npos - 1)), "bcdef");
}

TEST(DStringLeftAndRight, AreCutToTheText) {
    const DString text("abc");
    EXPECT_EQ(Text(text.Left(2)), "ab");
    EXPECT_EQ(Text(text.Left(10)), "abc");
    EXPECT_EQ(Text(text.Left(npos)), "abc");
    EXPECT_EQ(Text(text.Left(0)), "");
    EXPECT_EQ(Text(text.Left(-1)), "");
    EXPECT_EQ(Text(text.Right(2)), "bc");
    EXPECT_EQ(Text(text.Right(10)), "abc");
    EXPECT_EQ(Text(text.Right(npos)), "abc");
    EXPECT_EQ(Text(text.Right(0)), "");
    EXPECT_EQ(Text(text.Right(-1)), "");
}

TEST(DStringAfterAndBefore, CutAtTheFirstOrLastCharacter) {
    const DString name("one.two.three");
    EXPECT_EQ(Text(name.AfterFirst('.', false)), "two.three");
    EXPECT_EQ(Text(name.AfterLast('.', false)), "three");
    EXPECT_EQ(Text(name.BeforeFirst('.', false)), "one");
    EXPECT_EQ(Text(name.BeforeLast('.', false)), "one.two");
}

TEST(DStringAfterAndBefore, GiveNothingAtTheEnds) {
    EXPECT_EQ(Text(DString("host.").AfterFirst('.', true)), "");
    EXPECT_EQ(Text(DString("host.").AfterLast('.', true)), "");
    EXPECT_EQ(Text(DString(".ini").BeforeFirst('.', true)), "");
    EXPECT_EQ(Text(DString(".ini").BeforeLast('.', true)), "");
}

TEST(DStringAfterAndBefore, WithoutTheCharacterGiveAShareOfTheWholeOrNothing) {
    const DString host("host");
    EXPECT_EQ(Place(host.AfterFirst('.', true)), Place(host));
    EXPECT_EQ(Place(host.AfterLast('.', true)), Place(host));
    EXPECT_EQ(Place(host.BeforeFirst('.', true)), Place(host));
    EXPECT_EQ(Place(host.BeforeLast('.', true)), Place(host));
    ExpectSharedEmptyBlock(host.AfterFirst('.', false));
    ExpectSharedEmptyBlock(host.AfterLast('.', false));
    ExpectSharedEmptyBlock(host.BeforeFirst('.', false));
    ExpectSharedEmptyBlock(host.BeforeLast('.', false));
}

TEST(DStringAfterAndBefore, OfAnEmptyTextShareItAndOfANullGiveTheEmptyBlock) {
    const DString empty("");
    EXPECT_EQ(Place(empty.AfterFirst('.', true)), Place(empty));
    EXPECT_EQ(Place(empty.BeforeLast('.', true)), Place(empty));
    ExpectSharedEmptyBlock(empty.AfterLast('.', false));
    ExpectSharedEmptyBlock(NullString().AfterFirst('.', true));
    EXPECT_EQ(NullString().AfterFirst('.', true).GetRefs(), -1);
    EXPECT_EQ(NullString().AfterLast('.', true).GetRefs(), -1);
    EXPECT_EQ(NullString().BeforeFirst('.', true).GetRefs(), -1);
    EXPECT_EQ(NullString().BeforeLast('.', true).GetRefs(), -1);
}

TEST(DStringTrim, RemovesSpacesAndNothingElse) {
    EXPECT_EQ(Text(DString("  a b  ").Trim()), "a b");
    EXPECT_EQ(Text(DString("\t a \n").Trim()), "\t a \n");
    EXPECT_EQ(Text(DString("a").Trim()), "a");
    ExpectOwnEmptyBlock(DString("   ").Trim());
    ExpectOwnEmptyBlock(DString().Trim());
}

TEST(DStringTrim, ReturnsANewStringAndLeavesTheOldOne) {
    const DString text(" a ");
    EXPECT_EQ(Text(text.Trim()), "a");
    EXPECT_EQ(Text(text.LTrim()), "a ");
    EXPECT_EQ(Text(text), " a ");
}

TEST(DStringLTrim, RemovesLeadingSpaces) {
    EXPECT_EQ(Text(DString("  a ").LTrim()), "a ");
    EXPECT_EQ(Text(DString("\ta").LTrim()), "\ta");
    EXPECT_EQ(Text(DString("  ").LTrim()), "");
}

TEST(DStringDespace, RemovesSpacesInsideToo) {
    EXPECT_EQ(Text(DString(" a b\tc  d ").Despace()), "ab\tcd");
    EXPECT_EQ(Text(DString("   ").Despace()), "");
    EXPECT_EQ(Text(DString("abc").Despace()), "abc");
}

// ---- Changes in place

TEST(DStringCase, MapsLettersUpToAZeroByte) {
    DString text("Shot 12 Ab");
    EXPECT_EQ(&text.ToLower(), &text);
    EXPECT_EQ(Text(text), "shot 12 ab");
    EXPECT_EQ(&text.ToUpper(), &text);
    EXPECT_EQ(Text(text), "SHOT 12 AB");
    EXPECT_EQ(Text(StringOf(std::string("a\0b", 3)).ToUpper()), std::string("A\0b", 3));
}

TEST(DStringCase, FollowsTheLocale) {
    EXPECT_EQ(Text(DString("\xC4").ToLower()), "\xC4");
    const GermanLocale german;
    if (!german.IsSet()) GTEST_SKIP() << "no locale could be compiled here";
    EXPECT_EQ(Text(DString("\xC4").ToLower()), "\xE4");
    EXPECT_EQ(Text(DString("\xE4").ToUpper()), "\xC4");
#ifndef __SANITIZE_ADDRESS__  // whose own strcasecmp knows ASCII alone
    EXPECT_TRUE(DString("\xC4") == DString("\xE4"));
#endif
}

TEST(DStringRTrim, NeverRemovesTheFirstCharacter) {
    EXPECT_EQ(Text(DString("   ").RTrim()), " ");
    EXPECT_EQ(Text(DString(" ").RTrim()), " ");
    EXPECT_EQ(Text(DString("a   ").RTrim()), "a");
    EXPECT_EQ(Text(DString(" a b ").RTrim()), " a b");
    EXPECT_EQ(Text(DString("a\t").RTrim()), "a\t");
}

TEST(DStringRTrim, CutsAtTheFirstZeroByteFirst) {
    EXPECT_EQ(Text(StringOf(std::string("ab  \0cd", 7)).RTrim()), "ab");
    EXPECT_EQ(Text(StringOf(std::string("\0 ", 2)).RTrim()), "");
}

TEST(DStringRTrim, LeavesAnEmptyTextABlockOfItsOwn) {
    for (const DString& empty : EmptyStrings()) {
        DString text(empty);
        EXPECT_EQ(&text.RTrim(), &text);
        EXPECT_EQ(text.GetLength(), 0);
        EXPECT_EQ(text.GetRefs(), 1);
    }
}

TEST(DStringRemoveExt, CutsAtTheLastDotUnlessItStandsFirst) {
    DString name("a.b.wvf");
    EXPECT_EQ(&name.RemoveExt(), &name);
    EXPECT_EQ(Text(name), "a.b");
    EXPECT_EQ(Text(DString(".ini").RemoveExt()), ".ini");
    EXPECT_EQ(Text(DString("name").RemoveExt()), "name");
    EXPECT_EQ(Text(DString("name.").RemoveExt()), "name");
}

TEST(DStringRemoveExt, TakesADotInAFolderName) {
    EXPECT_EQ(Text(DString("/data.old/shot").RemoveExt()), "/data");
}

TEST(DStringLFtoCRLF, MakesBareLineFeedsLineEnds) {
    EXPECT_EQ(Text(DString("a\nb\r\nc\n").LFtoCRLF()), "a\r\nb\r\nc\r\n");
    EXPECT_EQ(Text(DString("\n\n").LFtoCRLF()), "\r\n\r\n");
    EXPECT_EQ(Text(DString("\r\n\n").LFtoCRLF()), "\r\n\r\n");
    EXPECT_EQ(Text(DString("a\rb").LFtoCRLF()), "a\rb");
}

TEST(DStringLFtoCRLF, TakesItsMarkForALineEnd) {
    EXPECT_EQ(Text(DString("a\xC9"
                           "b")
                       .LFtoCRLF()),
              "a\r\nb");
}

TEST(DStringLFtoCRLF, LeavesItsMarksInTheSourceAndItsShares) {
    DString text("a\nb");
    const DString share(text);
    EXPECT_EQ(Text(text.LFtoCRLF()), "a\r\nb");
    EXPECT_EQ(Text(text),
              "a\xC9"
              "b");
    EXPECT_EQ(Text(share),
              "a\xC9"
              "b");
    EXPECT_EQ(Place(share), Place(text));
}
