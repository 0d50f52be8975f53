# make demo: builds and runs the main job; make test: builds and runs every test.
JOBS ?= $(shell nproc)

.PHONY: deps build demo test clean

deps:
	bash scripts/install-deps.sh

build: deps
	cmake --preset default
	cmake --build --preset default -j $(JOBS)

demo: build
	./build/default/tools/pixturn demo demo-output

test: build
	ctest --preset default

clean:
	rm -rf build demo-output
