// A library that needs nothing. The linker gives it a symbol "nothing" whose value is null.

extern "C" int something() {
  return 1;
}
