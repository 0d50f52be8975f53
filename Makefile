# make demo: builds and runs the main job; make test: builds and runs every test.
JOBS ?= $(shell nproc)

.PHONY: deps build demo test clean bench

deps:
	bash scripts/install-deps.sh

build: deps
	cmake --preset default
	cmake --build --preset default -j $(JOBS)

demo: build
	./build/default/tools/pixturn demo demo-output

test: build
	ctest --preset default

# The benchmark against peer libraries: installs them, builds, runs and prints the
# comparison. Never part of test.
bench:
	bash scripts/install-bench-deps.sh
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS)
	./build/bench/bench/pixturn_bench --benchmark_out=build/bench/bench-results.json --benchmark_out_format=json

clean:
	rm -rf build demo-output
