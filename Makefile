# The short names of everyday work. The build itself is CMake's; see CMakePresets.json.
MAKEFLAGS += --no-print-directory

PREFIX ?= /usr/local
DESTDIR ?=
JOBS ?= $(shell nproc)
# 64 for the builds of 64-bit programs, in directories of their own: build/release64.
WIDTH ?= 32
W = $(filter 64,$(WIDTH))
PHOTO ?=
# The bench's options; with AGAINST, a revision or a library, it compares instead.
AGAINST ?=
BENCH ?= $(if $(AGAINST),,--sizes)
FUZZ_SECONDS ?= 30

.PHONY: all setup demo docs test bench sanitize clang debug coverage threads memory widths fuzz install package baseline format format-check clean

all: build/release$(W)/CMakeCache.txt
	@cmake --build build/release$(W) -j$(JOBS) --target zebcv zebcore

build/%/CMakeCache.txt: | setup
	@cmake --preset $* > build/$*.log 2>&1 || { cat build/$*.log; rm -f $@; exit 1; }

# Installs the packages that are missing, and only then needs the network.
setup:
	@mkdir -p build
	@tools/setup.sh

demo: build/release$(W)/CMakeCache.txt
	@cmake --build build/release$(W) -j$(JOBS) --target zebcv tour
	@build/release$(W)/bin/tour $(if $(PHOTO),'$(PHOTO)')

docs: build/release$(W)/CMakeCache.txt
	@cmake --build build/release$(W) -j$(JOBS) --target docs

test: build/release$(W)/CMakeCache.txt
	@cmake --build build/release$(W) -j$(JOBS)
	@tools/run_tests.sh build/release$(W) -j$(JOBS)

# WIDTH=both: the times of both widths side by side.
bench: build/release$(W)/CMakeCache.txt
	@cmake --build build/release$(W) -j$(JOBS) --target zebcv_bench
ifeq ($(WIDTH),both)
	@$(MAKE) build/release64/CMakeCache.txt
	@cmake --build build/release64 -j$(JOBS) --target zebcv_bench
	@build/release64/bin/zebcv_bench --json build/widths.json --beside build/release/bin/zebcv_bench $(filter-out --sizes,$(BENCH))
else ifeq ($(AGAINST),)
	@build/release$(W)/bin/zebcv_bench --json build/bench.json $(BENCH)
else
	@if [ -f '$(AGAINST)' ]; then against='$(AGAINST)'; \
	  else echo 'building $(AGAINST)'; against=$$(JOBS=$(JOBS) WIDTH=$(WIDTH) tools/build_revision.sh '$(AGAINST)') || exit 1; fi; \
	build/release$(W)/bin/zebcv_bench --json build/against.json --against "$$against" $(BENCH)
endif

clang debug clang-debug sanitize: %: build/%$(W)/CMakeCache.txt
	@cmake --build build/$@$(W) -j$(JOBS)
	@tools/run_tests.sh build/$@$(W) -j$(JOBS)

# The lines of the library that no test reaches.
coverage: build/coverage$(W)/CMakeCache.txt
	@tools/setup.sh llvm
	@cmake --build build/coverage$(W) -j$(JOBS)
	@JOBS=$(JOBS) tools/coverage.sh build/coverage$(W)

# What only 64 bits have room or tools for: the thread checker over what runs in several threads, and the memory checker.
threads: build/threads64/CMakeCache.txt build/release64/CMakeCache.txt
	@cmake --build build/threads64 -j$(JOBS) --target zebcv
	@cmake --build build/release64 -j$(JOBS) --target zebcv_tests zebcv_every_function
	@tools/check_threads.sh build/release64 build/threads64

memory: build/release64/CMakeCache.txt
	@cmake --build build/release64 -j$(JOBS) --target zebcv_digest tour
	@tools/check_memory.sh build/release64

# Both widths compute the same.
widths: build/release/CMakeCache.txt build/release64/CMakeCache.txt
	@cmake --build build/release -j$(JOBS) --target zebcv_digest
	@cmake --build build/release64 -j$(JOBS) --target zebcv_digest
	@tools/check_widths.sh build/release build/release64

# One target after the other; what it finds is left in build/fuzz as crash-*.
FUZZ_GROUPS = $(notdir $(wildcard fuzz/corpus/*))
fuzz: build/fuzz$(W)/CMakeCache.txt
	@cmake --build build/fuzz$(W) -j$(JOBS) --target $(addprefix fuzz_,$(FUZZ_GROUPS))
	@for group in $(FUZZ_GROUPS); do \
	  mkdir -p build/fuzz$(W)/corpus/$$group; \
	  build/fuzz$(W)/bin/fuzz_$$group -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 -artifact_prefix=build/fuzz$(W)/ \
	    build/fuzz$(W)/corpus/$$group fuzz/corpus/$$group || exit 1; \
	done

install: all
	@DESTDIR='$(DESTDIR)' cmake --install build/release$(W) --prefix '$(PREFIX)' > build/install.log || { cat build/install.log; exit 1; }
ifeq ($(DESTDIR),)
	@tools/finish_install.sh '$(PREFIX)' $(WIDTH)
endif

# WIDTH=both: those of both widths, and how they get on with each other.
package: build/package$(W)/CMakeCache.txt
ifeq ($(WIDTH),both)
	@$(MAKE) package WIDTH=32
	@$(MAKE) package WIDTH=64
	@tools/check_side_by_side.sh build/package build/package64
else
	@cmake --build build/package$(W) -j$(JOBS)
	@rm -f build/package$(W)/*.deb
	@cd build/package$(W) && cpack > cpack.log || { cat cpack.log; exit 1; }
	@tools/check_package.sh build/package$(W) $(WIDTH)
endif

# Writes what is new in the public headers into abi/; refuses what would break programs that are built already.
baseline: build/release$(W)/CMakeCache.txt
	@cmake --build build/release$(W) --target baseline

SOURCES = $(shell git ls-files '*.h' '*.cpp' '*.c')
format:
	@clang-format -i $(SOURCES)

format-check:
	@clang-format --dry-run --Werror $(SOURCES)

clean:
	@rm -rf build out
