// What another translation unit of the test program, compiled without exceptions and without
// run-time type information, does with the layer.
#pragma once

#include <system_error>

const std::error_category& category_of_the_second_unit();
std::error_code error_of_the_second_unit();
