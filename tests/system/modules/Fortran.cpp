// A module with the names that Fortran compilers give, and one that they don't.
extern "C" int runthing_();
extern "C" int RunThing();

int runthing_() { return 16; }

int RunThing() { return 0; }
