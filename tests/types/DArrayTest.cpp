// DArray over plain elements, strings and arrays of strings.
#include "types/DArray.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/ProcessMemory.h"
#include "support/Support.h"
#include "types/DStringArray.h"

namespace {

// How the tests make, compare and show the elements of each type.
template <typename T>
struct Element {
    static T Make(int i) { return static_cast<T>(i); }
    static std::string Show(const T& value) { return std::to_string(static_cast<long>(value)); }
};

template <>
struct Element<void*> {
    static void* Make(int i) { return reinterpret_cast<void*>(static_cast<intptr_t>(i)); }
    static std::string Show(void* value) {
        return std::to_string(reinterpret_cast<intptr_t>(value));
    }
};

template <>
struct Element<DString> {
    static DString Make(int i) { return i == 0 ? DString() : DString(i); }
    static std::string Show(const DString& value) { return value.IsEmpty() ? "0" : Text(value); }
};

template <>
struct Element<DStringArray> {
    static DStringArray Make(int i) {
        DStringArray value;
        if (i != 0) value.Add(DString(i));
        return value;
    }
    static std::string Show(const DStringArray& value) {
        return value.Count() == 0 ? "0" : Text(value.Join(","));
    }
};

// The elements in their order, with a blank as 0.
template <typename T>
std::string Show(const DArray<T>& array) {
    std::string text;
    for (int i = 0; i < array.Count(); ++i) {
        text += (i > 0 ? " " : "") + Element<T>::Show(array[i]);
    }
    return text;
}

template <typename T>
std::string Shape(const DArray<T>& array) {
    return std::to_string(array.RCount()) + "x" + std::to_string(array.CCount()) + "=" +
           std::to_string(array.Count());
}

// first, first + 1, ... in an array that has grown one by one.
template <typename T>
DArray<T> Counting(int n, int first = 1) {
    DArray<T> array;
    for (int i = 0; i < n; ++i)
        array.Add(Element<T>::Make(first + i), 1);
    return array;
}

template <typename T>
DArray<T> Table(int rows, int cols, int first = 1) {
    DArray<T> table = Counting<T>(rows * cols, first);
    table.ReSize(rows, cols);
    return table;
}

// An element that counts what is done with it.
struct Counter {
    static int m_Alive;
    static int m_Copies;
    static int m_Assignments;
    static int m_Destroyed;
    static void Reset() { m_Alive = m_Copies = m_Assignments = m_Destroyed = 0; }

    int m_Value = 0;

    Counter() { ++m_Alive; }
    explicit Counter(int value) : m_Value(value) { ++m_Alive; }
    Counter(const Counter& other) : m_Value(other.m_Value) {
        ++m_Alive;
        ++m_Copies;
    }
    Counter& operator=(const Counter& other) {
        m_Value = other.m_Value;
        ++m_Assignments;
        return *this;
    }
    ~Counter() {
        --m_Alive;
        ++m_Destroyed;
    }
};

int Counter::m_Alive = 0;
int Counter::m_Copies = 0;
int Counter::m_Assignments = 0;
int Counter::m_Destroyed = 0;

template <>
struct Element<Counter> {
    static Counter Make(int i) { return Counter(i); }
    static std::string Show(const Counter& value) { return std::to_string(value.m_Value); }
};

bool IsZero(const void* bytes, size_t n) {
    const unsigned char* byte = static_cast<const unsigned char*>(bytes);
    for (size_t i = 0; i < n; ++i) {
        if (byte[i] != 0) return false;
    }
    return true;
}

template <typename T>
int CompareDown(const void* a, const void* b) {
    const T first = *static_cast<const T*>(a);
    const T second = *static_cast<const T*>(b);
    return first < second ? 1 : first > second ? -1 : 0;
}

}  // namespace

static_assert(std::has_virtual_destructor_v<DArray<int>>);
static_assert(!std::is_convertible_v<int, DArray<int>>);
static_assert(sizeof(DStringArray) == sizeof(DArray<DString>));

// ---- Every element type

template <typename T>
class DArrayOf : public testing::Test {};

using ElementTypes = testing::Types<unsigned char, short, int, long, float, double, void*, DString,
                                    DStringArray, Counter>;
TYPED_TEST_SUITE(DArrayOf, ElementTypes);

TYPED_TEST(DArrayOf, ListIsBlank) {
    DArray<TypeParam> array(3);
    EXPECT_EQ(Show(array), "0 0 0");
    EXPECT_EQ(Shape(array), "1x3=3");
    EXPECT_EQ(array.Capacity(), 256);
}

TYPED_TEST(DArrayOf, AddGrowsPastTheCapacity) {
    DArray<TypeParam> array;
    for (int i = 0; i < 120; ++i)
        array.Add(Element<TypeParam>::Make(i), 1);
    array.ReSize(300);
    array.Add(Element<TypeParam>::Make(5), 1);
    EXPECT_EQ(Shape(array), "1x301=301");
    EXPECT_EQ(array.Capacity(), 512);
    EXPECT_EQ(Element<TypeParam>::Show(array[119]), "119");
    EXPECT_EQ(Element<TypeParam>::Show(array[120]), "0");
    EXPECT_EQ(Element<TypeParam>::Show(array.Last()), "5");
}

TYPED_TEST(DArrayOf, AddTakesARunThatBeginsAtTheElement) {
    const DArray<TypeParam> source = Counting<TypeParam>(4);
    DArray<TypeParam> array = Counting<TypeParam>(1, 9);
    array.Add(source[1], 3);
    EXPECT_EQ(Show(array), "9 2 3 4");
    array.Add(source[0], 0);
    array.Add(source[0], -1);
    EXPECT_EQ(Show(array), "9 2 3 4");
}

TYPED_TEST(DArrayOf, AddOfItsOwnElementWorksWhileItGrows) {
    DArray<TypeParam> array = Counting<TypeParam>(100);
    array.ReSize(256);
    ASSERT_EQ(array.Capacity(), 256);
    array.Add(array[99], 1);
    EXPECT_EQ(array.Count(), 257);
    EXPECT_EQ(Element<TypeParam>::Show(array[99]), "100");
    EXPECT_EQ(Element<TypeParam>::Show(array.Last()), "100");
}

TYPED_TEST(DArrayOf, InsertMovesTheTailUp) {
    const DArray<TypeParam> source = Counting<TypeParam>(2, 8);
    DArray<TypeParam> array = Counting<TypeParam>(3);
    array.Insert(source.Data(), 1, 2);
    EXPECT_EQ(Show(array), "1 8 9 2 3");
    EXPECT_EQ(Shape(array), "1x5=5");
}

TYPED_TEST(DArrayOf, InsertLimitsItsPlace) {
    const DArray<TypeParam> source = Counting<TypeParam>(1, 9);
    DArray<TypeParam> array = Counting<TypeParam>(2);
    array.Insert(source.Data(), 100, 1);
    array.Insert(source.Data(), -5, 1);
    EXPECT_EQ(Show(array), "9 1 2 9");
    array.Insert(source.Data(), 1, 0);
    array.Insert(source.Data(), 1, -1);
    array.Insert(nullptr, 1, 1);
    EXPECT_EQ(Show(array), "9 1 2 9");
}

TYPED_TEST(DArrayOf, InsertOfItsOwnElementsWorksInPlaceAndWhileItGrows) {
    DArray<TypeParam> array = Counting<TypeParam>(4);
    array.Insert(&array[1], 2, 2);
    EXPECT_EQ(Show(array), "1 2 2 3 3 4");
    array.Insert(&array[4], 0, 2);
    EXPECT_EQ(Show(array), "3 4 1 2 2 3 3 4");
    array.ReSize(256);
    array.Insert(&array[1], 0, 1);
    EXPECT_EQ(array.Count(), 257);
    EXPECT_EQ(Element<TypeParam>::Show(array[0]), "4");
    EXPECT_EQ(Element<TypeParam>::Show(array[2]), "4");
}

TYPED_TEST(DArrayOf, BlanksAreAddedAndInserted) {
    DArray<TypeParam> array = Counting<TypeParam>(3);
    array.AddBlank(2);
    EXPECT_EQ(Show(array), "1 2 3 0 0");
    array.InsertBlank(1, 2);
    EXPECT_EQ(Show(array), "1 0 0 2 3 0 0");
    array.InsertBlank(100, 1);
    array.InsertBlank(-1, 1);
    EXPECT_EQ(Show(array), "0 1 0 0 2 3 0 0 0");
    array.InsertBlank(1, -1);
    array.AddBlank(-3);
    EXPECT_EQ(Shape(array), "1x9=9");
}

TYPED_TEST(DArrayOf, NewElementsAreBlankWhereOthersHaveBeen) {
    DArray<TypeParam> array = Counting<TypeParam>(4);
    array.ReSize(1);
    array.ReSize(3);
    EXPECT_EQ(Show(array), "1 0 0");
}

TYPED_TEST(DArrayOf, RemoveMovesTheTailDown) {
    DArray<TypeParam> array = Counting<TypeParam>(5);
    array.Remove(1, 2);
    EXPECT_EQ(Show(array), "1 4 5");
    EXPECT_EQ(Shape(array), "1x3=3");
    array.Remove(-4, 1);
    EXPECT_EQ(Show(array), "4 5");
    array.Remove(1, 100);
    EXPECT_EQ(Show(array), "4");
    array.Remove(0, 0);
    array.Remove(0, -1);
    EXPECT_EQ(Show(array), "4");
    array.Remove(0, 1);
    array.Remove(0, 1);
    EXPECT_EQ(Shape(array), "1x0=0");
}

TYPED_TEST(DArrayOf, RemoveBeyondTheEndRemovesTheLastElement) {
    DArray<TypeParam> array = Counting<TypeParam>(3);
    array.Remove(100, 1);
    EXPECT_EQ(Show(array), "1 2");
    array.Remove(2, 5);
    EXPECT_EQ(Show(array), "1");
}

TYPED_TEST(DArrayOf, ReplaceStaysInside) {
    const DArray<TypeParam> source = Counting<TypeParam>(4, 6);
    DArray<TypeParam> array = Counting<TypeParam>(4);
    array.Replace(source.Data(), 1, 2);
    EXPECT_EQ(Show(array), "1 6 7 4");
    array.Replace(source.Data(), 2, 4);
    EXPECT_EQ(Show(array), "1 6 6 7");
    array.Replace(source.Data() + 3, 4, 1);
    EXPECT_EQ(Show(array), "1 6 6 9");
    array.Replace(source.Data(), -2, 1);
    EXPECT_EQ(Show(array), "6 6 6 9");
    array.Replace(source.Data(), 1, -1);
    array.Replace(nullptr, 1, 1);
    EXPECT_EQ(Show(array), "6 6 6 9");
    EXPECT_EQ(Shape(array), "1x4=4");
}

TYPED_TEST(DArrayOf, ReplaceTakesItsOwnElements) {
    DArray<TypeParam> up = Counting<TypeParam>(5);
    up.Replace(&up[0], 1, 4);
    EXPECT_EQ(Show(up), "1 1 2 3 4");
    DArray<TypeParam> down = Counting<TypeParam>(5);
    down.Replace(&down[1], 0, 4);
    EXPECT_EQ(Show(down), "2 3 4 5 5");
}

TYPED_TEST(DArrayOf, NothingIsReplacedRemovedOrReorderedInAnEmptyArray) {
    const DArray<TypeParam> source = Counting<TypeParam>(1);
    DArray<TypeParam> array;
    array.Replace(source.Data(), 0, 1);
    array.Remove(0, 1);
    array.Reorder(0, 1, 1);
    EXPECT_EQ(Shape(array), "1x0=0");
    EXPECT_EQ(array.Data(), nullptr);
}

TYPED_TEST(DArrayOf, ReorderMovesARunDownOrUp) {
    DArray<TypeParam> array = Counting<TypeParam>(6);
    array.Reorder(3, 1, 2);
    EXPECT_EQ(Show(array), "1 4 5 2 3 6");
    array.Reorder(1, 3, 2);
    EXPECT_EQ(Show(array), "1 2 3 4 5 6");
    array.Reorder(0, 5, 1);
    EXPECT_EQ(Show(array), "2 3 4 5 6 1");
    array.Reorder(100, -5, 1);
    EXPECT_EQ(Show(array), "1 2 3 4 5 6");
}

TYPED_TEST(DArrayOf, ReorderMovesAtLeastOneAndLimitsTheRun) {
    DArray<TypeParam> array = Counting<TypeParam>(4);
    array.Reorder(2, 2, 1);
    EXPECT_EQ(Show(array), "1 2 3 4");
    array.Reorder(0, 1, 0);
    EXPECT_EQ(Show(array), "2 1 3 4");
    array.Reorder(0, 1, -7);
    EXPECT_EQ(Show(array), "1 2 3 4");
    array.Reorder(2, 0, 100);
    EXPECT_EQ(Show(array), "3 4 1 2");
    array.Reorder(0, 3, 100);
    EXPECT_EQ(Show(array), "4 1 2 3");
}

TYPED_TEST(DArrayOf, CopiesAreIndependent) {
    DArray<TypeParam> array = Table<TypeParam>(2, 2);
    const DArray<TypeParam> copy(array);
    DArray<TypeParam> assigned = Counting<TypeParam>(3, 7);
    assigned = array;
    array[0] = Element<TypeParam>::Make(9);
    array.ReSize(1);
    EXPECT_EQ(Show(copy), "1 2 3 4");
    EXPECT_EQ(Shape(copy), "2x2=4");
    EXPECT_EQ(Show(assigned), "1 2 3 4");
    EXPECT_EQ(Shape(assigned), "2x2=4");
    EXPECT_EQ(copy.Capacity(), 256);
}

TYPED_TEST(DArrayOf, CopyOfAnEmptyTableKeepsItsRows) {
    const DArray<TypeParam> table(3, 0);
    const DArray<TypeParam> copy(table);
    EXPECT_EQ(Shape(copy), "3x0=0");
}

TYPED_TEST(DArrayOf, SelfAssignmentKeepsTheContent) {
    DArray<TypeParam> array = Counting<TypeParam>(3);
    const TypeParam* data = array.Data();
    const DArray<TypeParam>& alias = array;
    array = alias;
    EXPECT_EQ(array.Data(), data);
    EXPECT_EQ(Show(array), "1 2 3");
}

TYPED_TEST(DArrayOf, SizeThrowsTheContentAway) {
    DArray<TypeParam> array = Counting<TypeParam>(300);
    array.Size(3);
    EXPECT_EQ(Show(array), "0 0 0");
    EXPECT_EQ(array.Capacity(), 256);
    array.Size(2, 2);
    EXPECT_EQ(Show(array), "0 0 0 0");
    EXPECT_EQ(Shape(array), "2x2=4");
}

TYPED_TEST(DArrayOf, SizeZeroFreesEverything) {
    DArray<TypeParam> array = Counting<TypeParam>(3);
    array.Size(0);
    EXPECT_EQ(array.Data(), nullptr);
    EXPECT_EQ(array.Capacity(), 0);
    EXPECT_EQ(Shape(array), "1x0=0");
}

TYPED_TEST(DArrayOf, RefusedMemoryLeavesAFreshArrayEmpty) {
    const DArray<TypeParam> made(INT_MAX, INT_MAX);
    EXPECT_EQ(Shape(made), "1x0=0");
    EXPECT_EQ(made.Data(), nullptr);
    EXPECT_EQ(made.Capacity(), 0);
    DArray<TypeParam> sized = Counting<TypeParam>(3);
    sized.Size(INT_MAX, INT_MAX);
    EXPECT_EQ(Shape(sized), "1x0=0");
    EXPECT_EQ(sized.Data(), nullptr);
    sized.Add(Element<TypeParam>::Make(1), 1);
    EXPECT_EQ(Show(sized), "1");
}

TYPED_TEST(DArrayOf, RefusedMemoryLeavesAGrowingArrayAsItWas) {
    DArray<TypeParam> array = Counting<TypeParam>(3);
    const TypeParam* data = array.Data();
    array.ReSize(INT_MAX, INT_MAX);
    array.resize(LONG_MAX);
    array.realloc(LONG_MAX);
    EXPECT_EQ(Show(array), "1 2 3");
    EXPECT_EQ(Shape(array), "1x3=3");
    EXPECT_EQ(array.Data(), data);
    EXPECT_EQ(array.Capacity(), 256);
    EXPECT_EQ(array.alloc(LONG_MAX), nullptr);
    EXPECT_EQ(array.Capacity(), 256);
}

// ---- Fields

TEST(DArrayFields, StandInOrderWithTheirDefaults) {
    DArray<int> array;
    EXPECT_FALSE(array.m_ZeroAlloc);
    EXPECT_EQ(array.m_Grain, 256);
    EXPECT_EQ(array.m_Capacity, 0);
    EXPECT_EQ(array.m_Count, 0);
    EXPECT_EQ(array.m_Cols, 0);
    EXPECT_EQ(array.m_Rows, 1);
    EXPECT_EQ(array.m_Data, nullptr);
    const auto offset = [&array](const void* field) {
        return static_cast<const char*>(field) -
               static_cast<const char*>(static_cast<const void*>(&array));
    };
    EXPECT_EQ(offset(&array.m_ZeroAlloc), 8);
    EXPECT_EQ(offset(&array.m_Grain), 12);
    EXPECT_EQ(offset(&array.m_Capacity), 16);
    EXPECT_EQ(offset(&array.m_Count), 24);
    EXPECT_EQ(offset(&array.m_Cols), 32);
    EXPECT_EQ(offset(&array.m_Rows), 40);
    EXPECT_EQ(offset(&array.m_Data), 48);
    static_assert(std::is_same_v<decltype(array.m_Count), int64_t>);
}

TEST(DArrayFields, ElementsOfATableStandColumnAfterColumn) {
    DArray<int> table = Table<int>(5, 2, 0);
    EXPECT_EQ(table(1, 1), 6);
    EXPECT_EQ(&table(1, 1), &table[6]);
    EXPECT_EQ(&table.Last(), table.Data() + 9);
    const DArray<int>& same = table;
    EXPECT_EQ(same(4, 0), 4);
    EXPECT_EQ(same[5], 5);
    EXPECT_EQ(same.Data(), table.Data());
}

// ---- Capacity

TEST(DArrayCapacity, IsTheNextMultipleOf256Above) {
    const auto capacityFor = [](int n) { return DArray<int>(n).Capacity(); };
    EXPECT_EQ(capacityFor(1), 256);
    EXPECT_EQ(capacityFor(255), 256);
    EXPECT_EQ(capacityFor(256), 512);
    EXPECT_EQ(capacityFor(257), 512);
    EXPECT_EQ(capacityFor(512), 768);
}

TEST(DArrayCapacity, NothingIsAllocatedForNoElements) {
    for (const int n : {0, -1, INT_MIN}) {
        const DArray<int> array(n);
        EXPECT_EQ(array.Data(), nullptr);
        EXPECT_EQ(array.Capacity(), 0);
        EXPECT_EQ(Shape(array), "1x0=0");
    }
}

TEST(DArrayCapacity, GrowingToExactlyTheCapacityKeepsIt) {
    DArray<int> array(10);
    array.ReSize(256);
    EXPECT_EQ(array.Capacity(), 256);
    array.AddBlank(1);
    EXPECT_EQ(array.Capacity(), 512);
    array.Reserve(512);
    EXPECT_EQ(array.Capacity(), 512);
    array.Reserve(513);
    EXPECT_EQ(array.Capacity(), 768);
}

TEST(DArrayCapacity, IsReservedWithoutElements) {
    DArray<int> array = Counting<int>(2);
    array.Reserve(1000);
    EXPECT_EQ(array.Capacity(), 1024);
    EXPECT_EQ(Show(array), "1 2");
    array.realloc(1025);
    EXPECT_EQ(array.Capacity(), 1280);
    array.Reserve(5);
    array.Reserve(-5);
    EXPECT_EQ(array.Capacity(), 1280);
}

TEST(DArrayCapacity, FollowsTheGrainThatCopiesInherit) {
    DArray<int> array;
    array.m_Grain = 10;
    array.m_ZeroAlloc = true;
    array.ReSize(5);
    EXPECT_EQ(array.Capacity(), 10);
    const DArray<int> copy(array);
    EXPECT_EQ(copy.m_Grain, 10);
    EXPECT_TRUE(copy.m_ZeroAlloc);
    EXPECT_EQ(copy.Capacity(), 10);
}

TEST(DArrayCapacity, OfManyBlanksCostsAddressSpaceAndNotMemory) {
    constexpr int Many = 1 << 28;
    const long before = ResidentBytes();
    DArray<float> array(Many);
    ASSERT_EQ(array.Count(), Many);
    EXPECT_EQ(array[Many - 1], 0.0f);
    array.clear();
    array.ReSize(1, Many);
    ASSERT_EQ(array.Count(), Many);
    EXPECT_EQ(array[Many / 2], 0.0f);
    EXPECT_LT(ResidentBytes() - before, Many);  // a quarter of the array's bytes
}

// ---- alloc and the zero flag

TEST(DArrayAlloc, ReturnsAnAllocationThatItDoesNotStore) {
    DArray<int> array;
    int* data = array.alloc(300);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(array.Capacity(), 512);
    EXPECT_EQ(array.Data(), nullptr);
    EXPECT_EQ(array.Count(), 0);
    array.m_Data = data;  // the array frees it
}

TEST(DArrayAlloc, CountsANegativeNumberAsZero) {
    DArray<int> array;
    array.m_Data = array.alloc(-1);
    EXPECT_EQ(array.Capacity(), 256);
}

TEST(DArrayAlloc, ZeroesTheWholeCapacityIfTold) {
    DArray<int> array;
    array.m_ZeroAlloc = true;
    array.m_Data = array.alloc(1);
    EXPECT_TRUE(IsZero(array.Data(), 256 * sizeof(int)));
    for (int i = 0; i < 256; ++i)
        array.Add(1, 1);
    array.Reserve(600);
    EXPECT_EQ(array.Capacity(), 768);
    EXPECT_EQ(array[255], 1);
    EXPECT_TRUE(IsZero(array.Data() + 256, 512 * sizeof(int)));
}

// ---- Sizing

TEST(DArraySizing, OfATableBoundsRowsAndColumns) {
    DArray<int> array;
    array.Size(5, 2);
    EXPECT_EQ(Shape(array), "5x2=10");
    array.Size(0, 3);
    EXPECT_EQ(Shape(array), "1x3=3");
    array.Size(-2, 3);
    EXPECT_EQ(Shape(array), "1x3=3");
    array.Size(4, -1);
    EXPECT_EQ(Shape(array), "4x0=0");
    EXPECT_EQ(array.Data(), nullptr);
    array.Size(-1);
    EXPECT_EQ(Shape(array), "1x0=0");
    EXPECT_EQ(Shape(DArray<int>(2, 3)), "2x3=6");
}

TEST(DArraySizing, ReSizeKeepsTheContentAndTheAllocation) {
    DArray<int> array = Counting<int>(3);
    const int* data = array.Data();
    array.ReSize(2);
    EXPECT_EQ(Show(array), "1 2");
    EXPECT_EQ(array.Capacity(), 256);
    array.ReSize(4);
    EXPECT_EQ(Show(array), "1 2 0 0");
    array.ReSize(-1);
    EXPECT_EQ(Shape(array), "1x0=0");
    EXPECT_EQ(array.Data(), data);
    EXPECT_EQ(array.Capacity(), 256);
}

TEST(DArraySizing, ReSizeOfATableKeepsFlatIndexes) {
    DArray<int> table = Table<int>(2, 3);
    table.ReSize(3, 3);
    EXPECT_EQ(Shape(table), "3x3=9");
    EXPECT_EQ(Show(table), "1 2 3 4 5 6 0 0 0");
    EXPECT_EQ(table(0, 1), 4);
    table.ReSize(0, 2);
    EXPECT_EQ(Shape(table), "1x2=2");
    table.ReSize(2, -1);
    EXPECT_EQ(Shape(table), "2x0=0");
}

TEST(DArraySizing, ReSizeOfATableToAListMakesOneRow) {
    DArray<int> table = Table<int>(2, 3);
    table.ReSize(4);
    EXPECT_EQ(Shape(table), "1x4=4");
}

TEST(DArraySizing, SmallResizeLeavesRowsAndColumns) {
    DArray<int> table = Table<int>(2, 3);
    table.resize(3);
    EXPECT_EQ(Shape(table), "2x3=3");
    table.resize(-1);
    EXPECT_EQ(Shape(table), "2x3=0");
    table.resize(2);
    EXPECT_EQ(Show(table), "0 0");
}

TEST(DArraySizing, SmallClearLeavesRowsAndColumnsAndClearDoesNot) {
    DArray<int> table = Table<int>(2, 3);
    table.clear();
    EXPECT_EQ(Shape(table), "2x3=0");
    EXPECT_EQ(table.Data(), nullptr);
    EXPECT_EQ(table.Capacity(), 0);
    table.Clear();
    EXPECT_EQ(Shape(table), "1x0=0");
}

TEST(DArraySizing, AllocCopyTakesEverything) {
    const DArray<int> source = Table<int>(2, 2);
    DArray<int> array;
    array.alloccopy(source);
    EXPECT_EQ(Show(array), "1 2 3 4");
    EXPECT_EQ(Shape(array), "2x2=4");
}

// ---- Whole columns

TEST(DArrayTable, RemovesWholeColumns) {
    DArray<int> table = Table<int>(5, 3);
    table.Remove(0, 7);
    EXPECT_EQ(Shape(table), "5x2=10");
    EXPECT_EQ(table[0], 6);
    table.Remove(0, 4);
    EXPECT_EQ(Shape(table), "5x2=10");
}

TEST(DArrayTable, RemovingNearTheEndLeavesNoPartOfAColumn) {
    for (const int at : {6, 9, 10, 100}) {
        DArray<int> table = Table<int>(5, 2);
        table.Remove(at, 5);
        EXPECT_EQ(table.Count(), table.RCount() * table.CCount()) << at;
        EXPECT_EQ(table.Count() % 5, 0) << at;
    }
}

TEST(DArrayTable, InsertsWholeColumns) {
    const DArray<int> source = Counting<int>(8, 21);
    DArray<int> table = Table<int>(5, 1);
    table.Insert(source.Data(), 0, 4);
    EXPECT_EQ(Shape(table), "5x1=5");
    table.Insert(source.Data(), 0, 8);
    EXPECT_EQ(Shape(table), "5x2=10");
    EXPECT_EQ(Show(table), "21 22 23 24 25 1 2 3 4 5");
    table.Add(source[0], 4);
    EXPECT_EQ(Shape(table), "5x2=10");
    table.InsertBlank(5, 9);
    EXPECT_EQ(Show(table), "21 22 23 24 25 0 0 0 0 0 1 2 3 4 5");
    EXPECT_EQ(Shape(table), "5x3=15");
}

TEST(DArrayTable, AddBlankDropsAPartOfAColumn) {
    DArray<int> table = Table<int>(5, 2);
    table.AddBlank(3);
    EXPECT_EQ(Shape(table), "5x2=10");
    table.AddBlank(5);
    EXPECT_EQ(Shape(table), "5x3=15");
    table.AddBlank(9);
    EXPECT_EQ(Shape(table), "5x4=20");
}

TEST(DArrayTable, ReplacesWholeColumnsAndStaysInside) {
    const DArray<int> source = Counting<int>(8, 21);
    DArray<int> table = Table<int>(2, 2);
    table.Replace(source.Data(), 0, 3);
    EXPECT_EQ(Show(table), "21 22 3 4");
    table.Replace(source.Data(), 3, 2);
    EXPECT_EQ(Show(table), "21 22 3 21");
    table.Replace(source.Data(), 0, 1);
    EXPECT_EQ(Show(table), "21 22 3 21");
}

TEST(DArrayTable, ReordersWholeColumns) {
    DArray<int> table = Table<int>(2, 3);
    table.Reorder(5, 1, 3);
    EXPECT_EQ(Show(table), "5 6 1 2 3 4");
    EXPECT_EQ(Shape(table), "2x3=6");
    table.Reorder(0, 1, 2);
    EXPECT_EQ(Show(table), "5 6 1 2 3 4");
}

TEST(DArrayTable, ReorderOfLessThanAColumnMovesOneElement) {
    DArray<int> table = Table<int>(2, 2);
    table.Reorder(0, 2, 1);
    EXPECT_EQ(Show(table), "2 3 1 4");
}

// ---- Swapping and sorting

TEST(DArraySwapData, ExchangesAllButTheRows) {
    DArray<int> table = Table<int>(2, 3);
    DArray<int> list = Counting<int>(300, 1);
    table.m_Grain = 10;
    EXPECT_TRUE(table.SwapData(list));
    EXPECT_EQ(table.Count(), 300);
    EXPECT_EQ(table.CCount(), 300);
    EXPECT_EQ(table.Capacity(), 512);
    EXPECT_EQ(list.Count(), 6);
    EXPECT_EQ(list.CCount(), 3);
    EXPECT_EQ(list.Capacity(), 256);
    EXPECT_EQ(list[5], 6);
    EXPECT_EQ(table.m_Grain, 10);
    EXPECT_EQ(list.m_Grain, 256);
}

TEST(DArraySwapData, LeavesBothWithTheRowsOfTheArgument) {
    DArray<int> table = Table<int>(2, 3);
    DArray<int> list = Counting<int>(4);
    EXPECT_TRUE(table.SwapData(list));
    EXPECT_EQ(table.RCount(), 1);
    EXPECT_EQ(list.RCount(), 1);
    DArray<int> other = Table<int>(2, 3);
    DArray<int> second = Counting<int>(4);
    EXPECT_TRUE(second.SwapData(other));
    EXPECT_EQ(second.RCount(), 2);
    EXPECT_EQ(other.RCount(), 2);
}

TEST(DArraySwapData, IsFalseOnItself) {
    DArray<int> array = Counting<int>(2);
    EXPECT_FALSE(array.SwapData(array));
    EXPECT_EQ(Show(array), "1 2");
}

TEST(DArraySort, OrdersByTheCallersComparison) {
    DArray<int> array = Counting<int>(5);
    array.Sort(CompareDown<int>);
    EXPECT_EQ(Show(array), "5 4 3 2 1");
    DArray<double> table = Table<double>(2, 2);
    table.Sort(CompareDown<double>);
    EXPECT_EQ(table[0], 4.0);
    EXPECT_EQ(Shape(table), "2x2=4");
    DArray<int> empty;
    empty.Sort(CompareDown<int>);
    EXPECT_EQ(empty.Count(), 0);
}

// ---- Element types with a ground of their own

TEST(DArrayOfBool, HoldsBools) {
    DArray<bool> array(2);
    array.Add(true, 1);
    array.InsertBlank(2, 1);
    EXPECT_EQ(std::vector<bool>(array.Data(), array.Data() + array.Count()),
              (std::vector<bool>{false, false, false, true}));
}

TEST(DArrayOfStrings, SharesTheTexts) {
    const DString text("text");
    {
        DArray<DString> array;
        array.Add(text, 1);
        array.Insert(&text, 0, 1);
        EXPECT_EQ(text.GetRefs(), 3);
        const DArray<DString> copy(array);
        EXPECT_EQ(text.GetRefs(), 5);
        array.Replace(&text, 0, 1);
        EXPECT_EQ(text.GetRefs(), 5);
        array.Remove(0, 1);
        EXPECT_EQ(text.GetRefs(), 4);
        array.ReSize(0);
        EXPECT_EQ(text.GetRefs(), 3);
    }
    EXPECT_EQ(text.GetRefs(), 1);
}

TEST(DArrayOfStrings, HasTheSharedEmptyBlockForABlank) {
    const DArray<DString> array(2);
    EXPECT_EQ(static_cast<const char*>(array[1]), DEmptyString);
    EXPECT_EQ(DEmpty.m_Refs, -1);
}

TEST(DArrayOfStrings, MovesThemByBytes) {
    DArray<DString> array;
    const DString text("text");
    array.Add(text, 1);
    const char* place = array[0];
    for (int i = 0; i < 1000; ++i)
        array.InsertBlank(0, 1);
    EXPECT_EQ(static_cast<const char*>(array[1000]), place);
    EXPECT_EQ(text.GetRefs(), 2);
    array.Reorder(1000, 3, 1);
    EXPECT_EQ(static_cast<const char*>(array[3]), place);
    EXPECT_EQ(text.GetRefs(), 2);
}

class DArrayOfCounters : public testing::Test {
protected:
    DArrayOfCounters() { Counter::Reset(); }
    ~DArrayOfCounters() override { EXPECT_EQ(Counter::m_Alive, 0); }
};

TEST_F(DArrayOfCounters, GrowingAndShiftingRunNoConstructorAndNoDestructor) {
    DArray<Counter> array(255);
    Counter::m_Destroyed = 0;
    array.Reserve(5000);
    array.InsertBlank(0, 1);
    array.Reorder(0, 200, 30);
    EXPECT_EQ(Counter::m_Copies, 0);
    EXPECT_EQ(Counter::m_Assignments, 0);
    EXPECT_EQ(Counter::m_Destroyed, 0);
    EXPECT_EQ(Counter::m_Alive, 256);
    array.Remove(10, 6);
    EXPECT_EQ(Counter::m_Destroyed, 6);
    EXPECT_EQ(Counter::m_Copies, 0);
}

TEST_F(DArrayOfCounters, OnlyElementsWithinTheCountAreObjects) {
    DArray<Counter> array(3);
    EXPECT_EQ(Counter::m_Alive, 3);
    array.ReSize(2);
    EXPECT_EQ(Counter::m_Alive, 2);
    array.AddBlank(4);
    EXPECT_EQ(Counter::m_Alive, 6);
    array.resize(1);
    EXPECT_EQ(Counter::m_Alive, 1);
    array.Size(7);
    EXPECT_EQ(Counter::m_Alive, 7);
    array.clear();
    EXPECT_EQ(Counter::m_Alive, 0);
}

TEST_F(DArrayOfCounters, ReplaceAssignsToTheLiveElements) {
    const Counter value(5);
    DArray<Counter> array(3);
    array.Replace(&value, 1, 1);
    EXPECT_EQ(Show(array), "0 5 0");
    EXPECT_EQ(Counter::m_Alive, 4);
    EXPECT_GE(Counter::m_Assignments, 1);
}

TEST_F(DArrayOfCounters, InsertCopiesEachElementOnce) {
    const DArray<Counter> source(4);
    DArray<Counter> array(2);
    array.Insert(source.Data(), 1, 4);
    EXPECT_EQ(Counter::m_Copies, 4);
    EXPECT_EQ(Counter::m_Alive, 10);
}
