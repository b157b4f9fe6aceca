/* A host in C11: fails unless the library answers rightly. */
#include <stdio.h>
#include <string.h>

#include "core/CFunctions.h"

static int mWrong = 0;

static void Check(int right, const char* what) {
    if (right) return;
    fprintf(stderr, "wrong: %s\n", what);
    ++mWrong;
}

static void CheckText(int room, const char* expected) {
    char buffer[80];
    int length = room;
    memset(buffer, '#', sizeof buffer);
    GetStringC(99, &length, buffer);
    Check(length == (int)strlen(expected), "the length of a text");
    Check(memcmp(buffer, expected, strlen(expected)) == 0, "a text");
    Check(buffer[strlen(expected)] == '#', "the room behind a text");
}

int main(void) {
    Check(TestFuncC() == 316, "TestFuncC");
    InitializeTarselC(".");
    CheckText(79, "Test string from Tarsel");
    CheckText(4, "Test");
    Check(GetScalarDataC("2+3*4") == 14.0f, "an expression");
    return mWrong != 0;
}
