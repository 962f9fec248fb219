# Corvella's commands; `make help` lists them. Each installs the Debian packages that it misses, so each works
# in a fresh clone on a bare system; where make itself is missing, `./make` stands in for it.

.DEFAULT_GOAL := build
.NOTPARALLEL:

JOBS ?= $(shell nproc)
ARGS ?=
SEED ?=
PREFIX ?= /usr/local
DESTDIR ?=
CLANG_FORMAT ?= clang-format-14

# Clang 14's thread sanitizer cannot start where the kernel spreads addresses as widely as newer ones do.
FIXED_ADDRESSES = $(shell setarch --addr-no-randomize true 2>/dev/null && echo setarch --addr-no-randomize)

.PHONY: newest-compiler build run test install uninstall deb check-deb benchmark
.PHONY: sanitize asan-ubsan tsan fuzz fire fire-sanitized
.PHONY: check format check-format check-includes check-versions tidy clean help

build: packages-build build/release/build.ninja ## build the program: build/release/bin/corvella
	cmake --build --preset release --parallel $(JOBS)

run: packages-run build ## build and start the program, with ARGS="..." as its arguments
	build/release/bin/corvella $(ARGS)

test: packages-test build/test/build.ninja ## build and run all tests
	cmake --build --preset test --parallel $(JOBS)
	ctest --preset test

install: packages-build ## install the program under PREFIX, /usr/local if not given; DESTDIR goes before it
	cmake --preset release -DCMAKE_INSTALL_PREFIX="$(PREFIX)"
	cmake --build --preset release --parallel $(JOBS)
	DESTDIR="$(DESTDIR)" cmake --install build/release

uninstall: packages-build ## remove what `make install` with the same PREFIX and DESTDIR has installed
	tools/uninstall "$(PREFIX)" "$(DESTDIR)"

deb: packages-package ## build the Debian package corvella_VERSION_ARCH.deb in this folder
	tools/build-package

check-deb: packages-package packages-lint ## check the Debian package with lintian and the validators, and run what is in it
	tools/check-package corvella_*.deb

newest-compiler: packages-build ## build the program with the newest Clang that the system has packages of
	tools/newest-compiler build/newest

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

fuzz: packages-build packages-run packages-clang build/fuzz/build.ninja ## run each fuzzer for SECONDS=20 on its seeds; a finding is a failure
	cmake --build --preset fuzz --parallel $(JOBS)
	tools/fuzz build/fuzz $(or $(SECONDS),20)

fire: packages-test build/test/build.ninja ## torment the program beside hostile players, for SECONDS=60 and by SEED, chosen by chance
	cmake --build --preset test --parallel $(JOBS) --target fire
	build/test/bin/fire $(or $(SECONDS),60) $(SEED) --bus-ends

fire-sanitized: packages-test build/asan-ubsan/build.ninja ## the same under the address and undefined-behaviour sanitizers
	cmake --build --preset asan-ubsan --parallel $(JOBS) --target fire
	ASAN_OPTIONS=detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1 \
		build/asan-ubsan/bin/fire $(or $(SECONDS),60) $(SEED) --bus-ends

check: check-versions check-includes check-format tidy ## all checks that run no code

check-versions: ## check that all files tell the same version
	tools/check-versions

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

.PHONY: packages-build packages-run packages-test packages-check packages-clang packages-package packages-lint
packages-build:
	@tools/install-packages build
packages-run:
	@tools/install-packages build run
packages-test:
	@tools/install-packages build run test
packages-check:
	@tools/install-packages build check
packages-package:
	@tools/install-packages build package
packages-lint:
	@tools/install-packages run lint
packages-clang:
	@tools/install-packages build clang

# Ninja itself configures anew when a CMakeLists.txt changes, but knows nothing of the presets.
build/%/build.ninja: CMakePresets.json
	cmake --preset $*
