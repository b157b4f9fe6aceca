// The members of the array family with plain elements.
#include "types/DArray.h"

template class DArray<unsigned char>;
template class DArray<short>;
template class DArray<int>;
template class DArray<long>;
template class DArray<float>;
template class DArray<double>;
template class DArray<bool>;
template class DArray<void*>;
