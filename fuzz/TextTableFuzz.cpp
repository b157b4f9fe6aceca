// Lists and tables against vectors: the array's operations on numbers and on strings, and the
// cutting and joining of text. After each operation shape, capacity and elements are the model's.
#include <strings.h>

#include <memory>
#include <type_traits>
#include <vector>

#include "support/Fuzzing.h"
#include "support/TextModel.h"
#include "types/DStringArray.h"

namespace {

constexpr int64_t MostElements = 700;
constexpr int Grain = 256;

// The array told by its fields; storage exists exactly where there is a capacity.
template <typename E>
struct ListModel {
    std::vector<E> m_Items;
    int64_t m_Capacity = 0;
    int64_t m_Rows = 1;
    int64_t m_Cols = 0;

    int64_t Count() const { return static_cast<int64_t>(m_Items.size()); }
    int64_t Whole(int64_t n) const { return n - n % m_Rows; }
    void Grow(int64_t n) {
        if (n > m_Capacity) m_Capacity = n + Grain - n % Grain;
    }
    void SetCount(int64_t n) {
        Grow(n);
        m_Items.resize(static_cast<size_t>(n));
    }
    void SetShape(int64_t rows, int64_t cols) {
        m_Rows = std::max<int64_t>(rows, 1);
        m_Cols = std::max<int64_t>(cols, 0);
        SetCount(m_Rows * m_Cols);
    }
    void Clear() { *this = ListModel(); }
    void CopyFrom(const ListModel& other) {
        *this = other;
        m_Capacity = 0;
        Grow(Count());
    }
    void Insert(int64_t at, std::vector<E> items) {
        const int64_t n = Whole(static_cast<int64_t>(items.size()));
        if (n == 0) return;
        items.resize(static_cast<size_t>(n));
        Grow(Count() + n);
        m_Items.insert(m_Items.begin() + std::clamp<int64_t>(at, 0, Count()), items.begin(),
                       items.end());
        m_Cols += n / m_Rows;
    }
    /// Limits a run as Replace and Remove do; false where nothing is left.
    bool Limit(int64_t& at, int64_t& n) const {
        if (Count() == 0) return false;
        at = std::clamp<int64_t>(at, 0, Count() - 1);
        n = std::min(Whole(n), Count() - at);
        return n > 0;
    }
    void Replace(int64_t at, const std::vector<E>& items) {
        int64_t n = static_cast<int64_t>(items.size());
        if (Limit(at, n)) std::copy_n(items.begin(), n, m_Items.begin() + at);
    }
    void Remove(int64_t at, int64_t n) {
        if (!Limit(at, n)) return;
        n = Whole(n);
        m_Items.erase(m_Items.begin() + at, m_Items.begin() + at + n);
        m_Cols -= n / m_Rows;
    }
    void Reorder(int64_t from, int64_t to, int64_t n) {
        if (Count() == 0) return;
        from = std::clamp<int64_t>(Whole(from), 0, Count() - 1);
        to = std::clamp<int64_t>(Whole(to), 0, Count() - 1);
        if (from == to) return;
        n = std::min(std::max<int64_t>(Whole(n), 1), Count() - std::max(from, to));
        const auto begin = m_Items.begin();
        if (to < from) {
            std::rotate(begin + to, begin + from, begin + from + n);
        } else {
            std::rotate(begin + from, begin + from + n, begin + to + n);
        }
    }
};

// Two arrays and their models: of numbers, and of strings.
template <typename Array, typename T, typename E>
struct Session {
    Input& m_Input;
    Array m_Array;
    Array m_OtherArray;
    ListModel<E> m_Model;
    ListModel<E> m_OtherModel;

    /// An index or a count, sometimes negative or large.
    int Index() {
        const int choice = m_Input.Byte();
        return choice >= 250 ? choice - 254 : choice >= 240 ? 250 + choice - 240 : choice % 40;
    }
    void Play();
    void PlayShape();
    void PlayContent();
    void PlayRun();
    void PlayPair();
    void PlayText();
    void RequireEqual() const;
};

using Numbers = Session<DArray<int>, int, int>;
using Strings = Session<DStringArray, DString, std::string>;

void Take(Input& input, int& element) { element = input.Byte() - 100; }
void Take(Input& input, std::string& element) {
    element = input.Take(static_cast<size_t>(input.Below(12)));
}

DString StringOf(const std::string& text) {
    DString string;
    string.AllocCopy(static_cast<int>(text.size()), text.data());
    return string;
}
int ElementOf(int element) { return element; }
DString ElementOf(const std::string& element) { return StringOf(element); }
bool IsEqual(int element, int model) { return element == model; }
bool IsEqual(const DString& element, const std::string& model) {
    return element.GetLength() == static_cast<int>(model.size()) &&
           memcmp(element, model.data(), model.size()) == 0;
}

template <typename E, typename T>
void RequireEqualArrays(const DArray<T>& array, const ListModel<E>& model) {
    REQUIRE(array.Count() == model.Count());
    REQUIRE(array.RCount() == model.m_Rows);
    REQUIRE(array.CCount() == model.m_Cols);
    REQUIRE(array.Capacity() == model.m_Capacity);
    REQUIRE((array.Data() != nullptr) == (model.m_Capacity > 0));
    for (int i = 0; i < array.Count(); ++i) {
        REQUIRE(IsEqual(array[i], model.m_Items[static_cast<size_t>(i)]));
    }
}

template <typename Array, typename T, typename E>
void Session<Array, T, E>::RequireEqual() const {
    RequireEqualArrays(m_Array, m_Model);
    RequireEqualArrays(m_OtherArray, m_OtherModel);
}

// ---- The array's operations

template <typename Array, typename T, typename E>
void Session<Array, T, E>::PlayShape() {
    const int way = m_Input.Below(8);
    const int n = Index();
    const int rows = Index() % 7;
    switch (way) {
        case 0:
            m_Array.Size(n);
            m_Model.Clear();
            return m_Model.SetShape(1, n);
        case 1:
            m_Array.Size(rows, n % 30);
            m_Model.Clear();
            return m_Model.SetShape(rows, n % 30);
        case 2:
            m_Array.ReSize(n);
            return m_Model.SetShape(1, n);
        case 3:
            m_Array.ReSize(rows, n % 30);
            return m_Model.SetShape(rows, n % 30);
        case 4:
            m_Array.resize(n);
            return m_Model.SetCount(std::max(n, 0));
        case 5:
            m_Array.Reserve(n + 200);
            return m_Model.Grow(n + 200);
        case 6:
            m_Array.Clear();
            return m_Model.Clear();
        default:
            m_Array.clear();
            m_Model.m_Items.clear();
            m_Model.m_Capacity = 0;
    }
}

template <typename Array, typename T, typename E>
void Session<Array, T, E>::PlayContent() {
    const int at = Index();
    const int n = Index();
    const int way = m_Input.Below(5);
    switch (way) {
        case 0:
            m_Array.AddBlank(n);
            m_Model.m_Cols = (m_Model.Count() + std::max(n, 0)) / m_Model.m_Rows;
            return m_Model.SetCount(m_Model.m_Rows * m_Model.m_Cols);
        case 1:
            m_Array.InsertBlank(at, n);
            return m_Model.Insert(at, std::vector<E>(static_cast<size_t>(std::max(n, 0))));
        case 2:
            m_Array.Remove(at, n);
            return m_Model.Remove(at, n);
        case 3: {
            const int to = Index();
            m_Array.Reorder(at, to, n);
            return m_Model.Reorder(at, to, n);
        }
        default:
            if (m_Array.Count() == 0) return;
            Take(m_Input, m_Model.m_Items.back());
            m_Array.Last() = ElementOf(m_Model.m_Items.back());
    }
}

// Runs of elements from outside, from the other array and from the array itself.
template <typename Array, typename T, typename E>
void Session<Array, T, E>::PlayRun() {
    std::vector<E> items(static_cast<size_t>(1 + m_Input.Below(6)));
    for (E& item : items)
        Take(m_Input, item);
    std::vector<T> elements;
    for (const E& item : items)
        elements.push_back(ElementOf(item));
    const T* source = elements.data();
    const int from = m_Input.Below(3);
    if (from > 0) {
        const Array& array = from == 1 ? m_OtherArray : m_Array;
        const ListModel<E>& model = from == 1 ? m_OtherModel : m_Model;
        if (array.Count() == 0) return;
        const int start = m_Input.Byte() % array.Count();
        source = array.Data() + start;
        items.assign(model.m_Items.begin() + start, model.m_Items.end());
    }
    // A run in the array itself may be asked to go on beyond the array's end.
    const int length = static_cast<int>(items.size());
    const int n = from == 2 ? Index() : std::min(Index(), length);
    items.resize(static_cast<size_t>(std::clamp(n, 0, length)));
    const int at = Index();
    switch (m_Input.Below(3)) {
        case 0:
            m_Array.Insert(source, at, n);
            return m_Model.Insert(at, items);
        case 1:
            static_cast<DArray<T>&>(m_Array).Add(*source, n);
            return m_Model.Insert(m_Model.Count(), items);
        default:
            m_Array.Replace(source, at, n);
            m_Model.Replace(at, items);
    }
}

int CompareNumbers(const void* a, const void* b) {
    return *static_cast<const int*>(a) - *static_cast<const int*>(b);
}

void Sort(DArray<int>& array, ListModel<int>& model) {
    array.Sort(CompareNumbers);
    std::sort(model.m_Items.begin(), model.m_Items.end());
}

// Texts that differ in case alone may stand in either order.
void Sort(DStringArray& array, ListModel<std::string>& model) {
    array.Sort();
    std::vector<std::string> sorted;
    for (int i = 0; i < array.Count(); ++i) {
        sorted.emplace_back(static_cast<const char*>(array[i]),
                            static_cast<size_t>(array[i].GetLength()));
        if (i > 0) REQUIRE(strcasecmp(array[i - 1], array[i]) <= 0);
    }
    REQUIRE(std::is_permutation(sorted.begin(), sorted.end(), model.m_Items.begin(),
                                model.m_Items.end()));
    model.m_Items = sorted;
}

template <typename Array, typename T, typename E>
void Session<Array, T, E>::PlayPair() {
    switch (m_Input.Below(5)) {
        case 0:
            m_Array = m_OtherArray;
            return m_Model.CopyFrom(m_OtherModel);
        case 1: {
            m_OtherArray.~Array();
            ::new (static_cast<void*>(&m_OtherArray)) Array(m_Array);
            return m_OtherModel.CopyFrom(m_Model);
        }
        case 2: {
            const int64_t rows = m_OtherModel.m_Rows;
            REQUIRE(m_Array.SwapData(m_OtherArray) && !m_Array.SwapData(m_Array));
            std::swap(m_Model, m_OtherModel);
            m_Model.m_Rows = m_OtherModel.m_Rows = rows;
            return;
        }
        case 3: {
            const Array& self = m_Array;
            m_Array = self;
            return;
        }
        default:
            Sort(m_Array, m_Model);
    }
}

// ---- Cutting and joining text

struct Delimiter {
    const char* m_Pointer;
    std::string m_Text;
    std::unique_ptr<std::string> m_Own;
    explicit Delimiter(Input& input) {
        const char* const usual[] = {" ", ",", "\t", "  ", ", ", "aa"};
        const int choice = input.Below(9);
        if (choice == 6) {
            m_Pointer = LDelim;
        } else if (choice > 6) {
            m_Own = std::make_unique<std::string>(CText(input.Take(3)));
            m_Pointer = choice == 7 && m_Own->empty() ? nullptr : m_Own->c_str();
        } else {
            m_Pointer = usual[choice];
        }
        m_Text = m_Pointer == LDelim ? "\n" : m_Pointer ? m_Pointer : "";
    }
};

// The pieces; `isOpen` tells that the last one has no delimiter behind it.
std::vector<std::string> PiecesOf(const std::string& text, const std::string& delim, bool& isOpen) {
    std::vector<std::string> pieces;
    const bool atSpaces = delim == " ";
    const auto skip = [&](size_t at) {
        while (atSpaces && at < text.size() && text[at] == ' ')
            ++at;
        return at;
    };
    size_t start = skip(0);
    while (!delim.empty() && start < text.size()) {
        const size_t found = CText(text, start).find(delim);
        if (found == std::string::npos) break;
        pieces.push_back(text.substr(start, found));
        start = skip(start + found + delim.size());
    }
    isOpen = start < text.size();
    if (isOpen) pieces.push_back(text.substr(start));
    return pieces;
}

void SplitModel(ListModel<std::string>& model, const std::string& text, const Delimiter& delim,
                int n) {
    if (n > 0) model.Grow(n);
    bool isOpen = false;
    std::vector<std::string> pieces = PiecesOf(text, delim.m_Text, isOpen);
    std::vector<std::string> last;
    if (isOpen) {
        last.push_back(pieces.back());
        pieces.pop_back();
    }
    for (const std::string& piece : pieces) {
        model.Grow(model.Count() + 1);
        model.m_Items.push_back(piece);
    }
    model.Insert(model.Count(), last);
    if (delim.m_Pointer == LDelim && (n > 0 || !text.empty())) {
        for (std::string& item : model.m_Items) {
            if (item.ends_with('\r')) item.pop_back();
        }
    }
    if (n > 0 && model.Count() < n) model.SetShape(1, n);
}

// A table of the lines: each fills one column from the top.
void TableModel(ListModel<std::string>& model, const std::vector<std::string>& lines,
                const Delimiter& delim, int cols) {
    std::vector<std::vector<std::string>> columns;
    int width = 0;
    for (const std::string& line : lines) {
        ListModel<std::string> pieces;
        SplitModel(pieces, line, delim, -1);
        columns.push_back(pieces.m_Items);
        if (columns.size() <= 100) width = std::max(width, static_cast<int>(pieces.Count()));
    }
    if (cols < 0) cols = width;
    model.Clear();
    model.SetShape(cols, static_cast<int64_t>(lines.size()));
    for (size_t i = 0; i < columns.size(); ++i) {
        columns[i].resize(static_cast<size_t>(cols));
        std::copy(columns[i].begin(), columns[i].end(),
                  model.m_Items.begin() + static_cast<int64_t>(i) * cols);
    }
}

std::string JoinedModel(const std::vector<std::string>& items, const std::string& separator) {
    std::string joined;
    for (size_t i = 0; i < items.size(); ++i)
        joined += (i > 0 ? separator : "") + items[i];
    return joined;
}

void JoinStrings(Strings& session) {
    std::string separator;
    Take(session.m_Input, separator);
    const DString joined = session.m_Array.Join(StringOf(separator));
    REQUIRE(IsEqual(joined, JoinedModel(session.m_Model.m_Items, separator)));

    std::string buffer(session.m_Input.Byte(), '~');
    std::string expected = buffer;
    size_t at = 0;
    for (const std::string& item : session.m_Model.m_Items) {
        if (at + item.size() + 2 > expected.size()) break;
        expected.replace(at, item.size() + 2, item + "\r\n");
        at += item.size() + 2;
    }
    session.m_Array.JoinInto(buffer.data());
    REQUIRE(buffer == expected);
}

void FindString(Strings& session) {
    std::string wanted;
    Take(session.m_Input, wanted);
    int expected = -1;
    for (size_t i = session.m_Model.m_Items.size(); i-- > 0;) {
        const std::string& item = session.m_Model.m_Items[i];
        if (item.size() == wanted.size() && Lowered(CText(item)) == Lowered(CText(wanted))) {
            expected = static_cast<int>(i);
        }
    }
    REQUIRE(session.m_Array.Index(StringOf(wanted)) == expected);
}

// Cuts a text of the input, or an element of the array itself.
void SplitString(Strings& session) {
    const Delimiter delim(session.m_Input);
    const int n = session.m_Input.Byte() % 40 - 5;
    const int count = session.m_Array.Count();
    if (count > 0 && session.m_Input.Below(4) == 0) {
        const int i = session.m_Input.Byte() % count;
        const std::string text = session.m_Model.m_Items[static_cast<size_t>(i)];
        session.m_Array.split(session.m_Array[i], delim.m_Pointer, n);
        SplitModel(session.m_Model, text, delim, n);
    } else {
        const std::string text = session.m_Input.Take(session.m_Input.Byte() % 100);
        session.m_Array.split(StringOf(text), delim.m_Pointer, n);
        SplitModel(session.m_Model, text, delim, n);
    }
}

void MakeTable(Strings& session) {
    const Delimiter delim(session.m_Input);
    const int n = session.m_Input.Byte() % 10 - 2;
    DArray<DStringArray> table;
    session.m_Array.MakeTable(table, delim.m_Pointer, n);
    REQUIRE(table.Count() == session.m_Array.Count());
    for (int i = 0; i < table.Count(); ++i) {
        ListModel<std::string> pieces;
        SplitModel(pieces, session.m_Model.m_Items[static_cast<size_t>(i)], delim, n);
        RequireEqualArrays(table[i], pieces);
    }
}

void FillTable(Strings& session) {
    const Delimiter delim(session.m_Input);
    const int cols = session.m_Input.Below(8) - 1;
    if (cols > 0 && session.m_OtherModel.Count() * cols > MostElements) return;
    switch (session.m_Input.Below(3)) {
        case 0:
            session.m_Array.Split1Dto2D(session.m_OtherArray, delim.m_Pointer, cols);
            TableModel(session.m_Model, session.m_OtherModel.m_Items, delim, cols);
            break;
        case 1: {
            if (cols > 0 && session.m_Model.Count() * cols > MostElements) return;
            const std::vector<std::string> lines = session.m_Model.m_Items;
            session.m_Array.Split1Dto2D(session.m_Array, delim.m_Pointer, cols);
            TableModel(session.m_Model, lines, delim, cols);
            break;
        }
        default: {
            const std::string text = session.m_Input.Take(session.m_Input.Byte());
            session.m_Array.Split2D(StringOf(text), delim.m_Pointer, cols);
            bool isOpen = false;
            std::vector<std::string> lines = PiecesOf(text, "\n", isOpen);
            for (std::string& line : lines) {
                if (line.ends_with('\r')) line.pop_back();
            }
            TableModel(session.m_Model, lines, delim, cols);
        }
    }
}

template <>
void Numbers::PlayText() {}

template <>
void Strings::PlayText() {
    switch (m_Input.Below(7)) {
        case 0:
        case 1:
            return SplitString(*this);
        case 2:
            return JoinStrings(*this);
        case 3:
            return FindString(*this);
        case 4:
            return MakeTable(*this);
        case 5:
            return FillTable(*this);
        default:
            std::string text;
            Take(m_Input, text);
            m_Array.Add(StringOf(text));
            m_Model.Insert(m_Model.Count(), {text});
    }
}

template <typename Array, typename T, typename E>
void Session<Array, T, E>::Play() {
    for (int steps = 0; !m_Input.IsEmpty() && steps < 60; ++steps) {
        switch (m_Input.Below(6)) {
            case 0:
                PlayShape();
                break;
            case 1:
                PlayContent();
                break;
            case 2:
                PlayRun();
                break;
            case 3:
                PlayPair();
                break;
            default:
                PlayText();
        }
        RequireEqual();
        if (m_Model.Count() <= MostElements) continue;
        m_Array.ReSize(MostElements / 2);
        m_Model.SetShape(1, MostElements / 2);
    }
}

}  // namespace

void StartTarget() {}

void RunInput(Input input) {
    if (input.Below(4) == 0) {
        Numbers{input, {}, {}, {}, {}}.Play();
    } else {
        Strings{input, {}, {}, {}, {}}.Play();
    }
}
