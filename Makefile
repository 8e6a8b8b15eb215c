# The front door. Each target installs the Debian packages it needs, builds, and runs.

.PHONY: all demo check check-i686 tsan coverage fuzz bench format
.PHONY: docs

all:
	@tools/build native

demo:
	@tools/demo

# Every test on the three hosts a change must pass on, then on 32-bit little-endian.
check:
	@tools/check native sanitize reference

check-i686:
	@tools/check i686

# What threads share, under the thread sanitizer.
tsan:
	@tools/tsan

# How much of the library the tests reach.
coverage:
	@tools/coverage

# Each fuzz target for a minute.
fuzz:
	@tools/fuzz

bench:
	@tools/bench

# The reference, as HTML and as manual pages.
docs:
	@tools/docs

format:
	@tools/install-packages format
	@git ls-files '*.h' '*.hpp' '*.c' '*.cpp' | xargs clang-format -i
