// A module that calls a function of another.
extern "C" int Provided();
extern "C" int AskProvider();

int AskProvider() { return Provided(); }
