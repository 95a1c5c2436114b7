# The short names of everyday work. The build itself is CMake's; see CMakePresets.json.
MAKEFLAGS += --no-print-directory

PREFIX ?= /usr/local
DESTDIR ?=
JOBS ?= $(shell nproc)
PHOTO ?=
# The bench's options; with AGAINST, a revision or a library, it compares instead.
AGAINST ?=
BENCH ?= $(if $(AGAINST),,--sizes)
FUZZ_SECONDS ?= 30

.PHONY: all setup demo docs test bench sanitize clang debug fuzz install package baseline format format-check clean

all: build/release/CMakeCache.txt
	@cmake --build build/release -j$(JOBS) --target zebcv zebcore

build/%/CMakeCache.txt: | setup
	@cmake --preset $* > build/$*.log 2>&1 || { cat build/$*.log; rm -f $@; exit 1; }

# Installs the packages that are missing, and only then needs the network.
setup:
	@mkdir -p build
	@tools/setup.sh

demo: build/release/CMakeCache.txt
	@cmake --build build/release -j$(JOBS) --target zebcv tour
	@build/release/bin/tour $(if $(PHOTO),'$(PHOTO)')

docs: build/release/CMakeCache.txt
	@cmake --build build/release -j$(JOBS) --target docs

test: build/release/CMakeCache.txt
	@cmake --build build/release -j$(JOBS)
	@tools/run_tests.sh build/release -j$(JOBS)

bench: build/release/CMakeCache.txt
	@cmake --build build/release -j$(JOBS) --target zebcv_bench
ifeq ($(AGAINST),)
	@build/release/bin/zebcv_bench --json build/bench.json $(BENCH)
else
	@if [ -f '$(AGAINST)' ]; then against='$(AGAINST)'; \
	  else echo 'building $(AGAINST)'; against=$$(JOBS=$(JOBS) tools/build_revision.sh '$(AGAINST)') || exit 1; fi; \
	build/release/bin/zebcv_bench --json build/against.json --against "$$against" $(BENCH)
endif

clang debug clang-debug sanitize: %: build/%/CMakeCache.txt
	@cmake --build build/$@ -j$(JOBS)
	@tools/run_tests.sh build/$@ -j$(JOBS)

# One target after the other; what it finds is left in build/fuzz as crash-*.
FUZZ_GROUPS = $(notdir $(wildcard fuzz/corpus/*))
fuzz: build/fuzz/CMakeCache.txt
	@cmake --build build/fuzz -j$(JOBS) --target $(addprefix fuzz_,$(FUZZ_GROUPS))
	@for group in $(FUZZ_GROUPS); do \
	  mkdir -p build/fuzz/corpus/$$group; \
	  build/fuzz/bin/fuzz_$$group -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 -artifact_prefix=build/fuzz/ \
	    build/fuzz/corpus/$$group fuzz/corpus/$$group || exit 1; \
	done

install: all
	@DESTDIR='$(DESTDIR)' cmake --install build/release --prefix '$(PREFIX)' > build/install.log || { cat build/install.log; exit 1; }
ifeq ($(DESTDIR),)
	@tools/finish_install.sh '$(PREFIX)'
endif

package: build/package/CMakeCache.txt
	@cmake --build build/package -j$(JOBS)
	@rm -f build/package/*.deb
	@cd build/package && cpack > cpack.log || { cat cpack.log; exit 1; }
	@tools/check_package.sh build/package

# Writes what is new in the public headers into abi/; refuses what would break programs that are built already.
baseline: build/release/CMakeCache.txt
	@cmake --build build/release --target baseline

SOURCES = $(shell git ls-files '*.h' '*.cpp' '*.c')
format:
	@clang-format -i $(SOURCES)

format-check:
	@clang-format --dry-run --Werror $(SOURCES)

clean:
	@rm -rf build out
