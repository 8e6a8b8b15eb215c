// A library that needs a function which is nowhere.

extern "C" {

int nowhere_to_be_found();

int something() {
  return nowhere_to_be_found();
}

}  // extern "C"
