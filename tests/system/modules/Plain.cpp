// A module with nothing in it that the library asks for by name.
extern "C" int PlainAnswer();

int PlainAnswer() { return 17; }
