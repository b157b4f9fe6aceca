// A module that offers a function to modules that are loaded later.
extern "C" int Provided();

int Provided() { return 32; }
