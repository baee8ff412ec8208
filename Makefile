# The two commands of the README: `make demo` and `make test`.
NATIVE := build/native
WIN64  := build/win64
BENCH  := build/bench
JOBS   ?= $(shell nproc)

.PHONY: build native win64 test unit demo bench deps prefix clean

build: deps native win64

deps:
	@scripts/deps.sh

native: deps
	@cmake -S . -B $(NATIVE) -G Ninja -DCMAKE_BUILD_TYPE=Debug >/dev/null
	@cmake --build $(NATIVE) -j $(JOBS)

win64: deps
	@cmake -S . -B $(WIN64) -G Ninja -DCMAKE_BUILD_TYPE=Release \
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
	@cmake --build $(BENCH) -j $(JOBS)

clean:
	rm -rf build
