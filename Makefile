# The two commands of the README: `make demo` and `make test`.
NATIVE := build/native
WIN64  := build/win64
BENCH  := build/bench
FUZZ   := build/fuzz
FUZZ_SECONDS ?= 60
JOBS   ?= $(shell nproc)
# ccache, when installed, shares object files between builds of several work trees.
LAUNCHER := $(if $(shell command -v ccache),-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
export CCACHE_BASEDIR ?= $(abspath ..)

.PHONY: build native win64 test unit demo bench fuzz deps prefix clean

build: deps native win64

deps:
	@scripts/deps.sh

native: deps
	@cmake -S . -B $(NATIVE) -G Ninja -DCMAKE_BUILD_TYPE=Debug $(LAUNCHER) >/dev/null
	@cmake --build $(NATIVE) -j $(JOBS)

win64: deps
	@cmake -S . -B $(WIN64) -G Ninja -DCMAKE_BUILD_TYPE=Release $(LAUNCHER) \
	      -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake >/dev/null
	@cmake --build $(WIN64) -j $(JOBS)

# The private Wine prefix is made once, before tests run side by side.
prefix: deps
	@scripts/wine-run --prefix-only

test: build prefix
	@cd $(NATIVE) && ctest -j $(JOBS) --output-on-failure --timeout 900

unit: native
	@cd $(NATIVE) && ctest -j $(JOBS) --output-on-failure -E 'integration|e2e'

demo: build prefix
	@scripts/demo

bench: deps
	@cmake -S . -B $(BENCH) -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTOR_SANITIZE=OFF -DVANTOR_BENCH=ON >/dev/null
	@cmake --build $(BENCH) -j $(JOBS) --target native_benchmarks
	@cmake -S . -B $(BENCH)-win64 -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTOR_BENCH=ON \
	      -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake >/dev/null
	@cmake --build $(BENCH)-win64 -j $(JOBS) --target wine_benchmarks

# Each fuzz target runs FUZZ_SECONDS from its kept corpus (build/fuzz/corpus/NAME), its seeds
# and its dictionary (tests/fuzz/NAME.dict) when it has one.
fuzz: deps
	@cmake -S . -B $(FUZZ) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
	      -DVANTOR_FUZZ=ON >/dev/null
	@cmake --build $(FUZZ) -j $(JOBS)
	@for target in $(FUZZ)/tests/fuzz/*_fuzz; do \
	  name=$$(basename $$target); mkdir -p $(FUZZ)/corpus/$$name; \
	  seeds=tests/fuzz/seeds/$$name; [ -d $$seeds ] || seeds=; \
	  dict=tests/fuzz/$$name.dict; [ -f $$dict ] && dict=-dict=$$dict || dict=; \
	  $$target -max_total_time=$(FUZZ_SECONDS) -timeout=10 -print_final_stats=1 $$dict $(FUZZ)/corpus/$$name $$seeds || exit 1; \
	done

clean:
	rm -rf build
