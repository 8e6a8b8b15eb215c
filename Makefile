# The front door. Each target installs the Debian packages it needs, builds, and runs.

.PHONY: all demo check check-i686 tsan coverage fuzz check-fuzz bench docs format install deb check-packages abi

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

# The fuzz targets build and run, and find nothing at once.
check-fuzz:
	@tools/fuzz 2

bench:
	@tools/bench

# The reference, as HTML and as manual pages.
docs:
	@tools/docs

format:
	@tools/install-packages format
	@git ls-files '*.h' '*.hpp' '*.c' '*.cpp' | xargs clang-format -i

# PREFIX is where it is used, DESTDIR a directory that stands for / while it is installed.
PREFIX ?= /usr/local
install:
	@tools/install '$(PREFIX)' '$(DESTDIR)'

deb:
	@tools/deb

# Packages and installs in roots of their own: agents are built and run from what is installed alone.
check-packages:
	@tools/check-packages

# What the library exports, beside what it is known to export.
abi:
	@tools/abi
