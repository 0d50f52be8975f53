# make demo: builds and runs the main job; make test: builds and runs every test
# (default build, sanitized build, 32-bit build, a minute of fuzzing);
# make fuzz-long: fuzzes for FUZZ_SECONDS (an hour unless told).
JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 3600

.PHONY: deps build demo test test-default test-asan test-m32 fuzz fuzz-long clean bench

deps:
	bash scripts/install-deps.sh

build: deps
	cmake --preset default
	cmake --build --preset default -j $(JOBS)

demo: build
	./build/default/tools/pixturn demo demo-output

test: test-default test-asan test-m32 fuzz

test-default: build
	ctest --preset default

test-asan: deps
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan

test-m32: deps
	cmake --preset m32
	cmake --build --preset m32 -j $(JOBS)
	ctest --preset m32

fuzz: deps
	JOBS=$(JOBS) bash scripts/fuzz.sh 60

fuzz-long: deps
	JOBS=$(JOBS) bash scripts/fuzz.sh $(FUZZ_SECONDS)

# The benchmark against peer libraries: installs them, builds, runs and prints the
# comparison. Never part of test.
bench:
	bash scripts/install-bench-deps.sh
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS)
	./build/bench/bench/pixturn_bench --benchmark_out=build/bench/bench-results.json --benchmark_out_format=json

clean:
	rm -rf build demo-output
