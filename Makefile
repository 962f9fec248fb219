# Corvella's commands; `make help` lists them. Each installs the Debian packages that it misses, so each works
# in a fresh clone on a bare system; where make itself is missing, `./make` stands in for it.

.DEFAULT_GOAL := build
.NOTPARALLEL:

JOBS ?= $(shell nproc)
ARGS ?=
CLANG_FORMAT ?= clang-format-14

# Clang 14's thread sanitizer cannot start where the kernel spreads addresses as widely as newer ones do.
FIXED_ADDRESSES = $(shell setarch --addr-no-randomize true 2>/dev/null && echo setarch --addr-no-randomize)

.PHONY: build run test benchmark sanitize asan-ubsan tsan check format check-format check-includes tidy clean help

build: packages-build build/release/build.ninja ## build the program: build/release/bin/corvella
	cmake --build --preset release --parallel $(JOBS)

run: packages-run build ## build and start the program, with ARGS="..." as its arguments
	build/release/bin/corvella $(ARGS)

test: packages-test build/test/build.ninja ## build and run all tests
	cmake --build --preset test --parallel $(JOBS)
	ctest --preset test

benchmark: packages-test build/test/build.ninja ## build and run all benchmarks, one after the other
	cmake --build --preset test --parallel $(JOBS)
	set -e; for bench in build/test/bin/bench_*; do echo "== $$bench"; "$$bench"; done

sanitize: asan-ubsan tsan ## run all tests under the address, undefined-behaviour and thread sanitizers

asan-ubsan: packages-test build/asan-ubsan/build.ninja
	cmake --build --preset asan-ubsan --parallel $(JOBS)
	ctest --preset asan-ubsan

tsan: packages-test packages-clang build/tsan/build.ninja
	cmake --build --preset tsan --parallel $(JOBS)
	$(FIXED_ADDRESSES) ctest --preset tsan

check: check-includes check-format tidy ## all checks that run no code

check-includes: ## check that each layer includes only what it may
	tools/check-includes

format: packages-check ## format all C++ files in place
	files=$$(tools/sources) && $(CLANG_FORMAT) -i $$files

check-format: packages-check ## check that all C++ files are formatted
	files=$$(tools/sources) && $(CLANG_FORMAT) --dry-run --Werror $$files

tidy: packages-test packages-check packages-clang build/tidy/build.ninja ## run clang-tidy on the program's own sources
	tools/tidy build/tidy

clean: ## remove everything built
	rm -rf build

help: ## show this list
	@sed -n 's/^\([a-z-]*\):.*## /\1\t/p' Makefile | expand -t 16

.PHONY: packages-build packages-run packages-test packages-check packages-clang
packages-build:
	@tools/install-packages build
packages-run:
	@tools/install-packages build run
packages-test:
	@tools/install-packages build run test
packages-check:
	@tools/install-packages build check
packages-clang:
	@tools/install-packages build clang

# Ninja itself configures anew when a CMakeLists.txt changes, but knows nothing of the presets.
build/%/build.ninja: CMakePresets.json
	cmake --preset $*
