# make demo: installs what the demo needs, builds the plug-in and pixturn only
# (build/demo) and runs the gallery; make test: builds and runs every test
# (default build, sanitized build, ThreadSanitizer build, the 32-bit x86 build,
# the ARM and arm64 builds under QEMU, the Mac x86-64 library here and the Mac
# arm64 one under QEMU through the simulated host's Mach-O loader, the Windows
# arm64 DLL under QEMU through its PE loader, the 64-bit Windows build under
# Wine, the 32-bit Windows DLL's exports and imports, a minute of fuzzing);
# make fuzz-long: fuzzes for FUZZ_RUNS inputs (ten million unless told), or
# FUZZ_SECONDS if given first; docs/reliability.md has its figures;
# make coverage: the lines of the plug-in the committed fuzz corpus reaches;
# make mutants: whether the tests catch each deliberate fault of scripts/mutants/;
# make bench-cli: every pixturn command against ImageMagick's convert on files;
# make package: the Xojo plug-in file build/package/PixTurn.xojo_plugin, every
# target of the README's table with the help; make test ends by checking it.
JOBS ?= $(shell nproc)
FUZZ_RUNS ?= 10000000
FUZZ_SECONDS ?= 0

.PHONY: deps deps-demo build build-demo demo test test-default test-asan test-tsan test-m32 test-armhf test-arm64 test-mac-x86-64 test-mac-arm64 test-win-arm64 test-win64 test-win32 test-package package fuzz fuzz-long coverage mutants clean bench bench-cli

deps:
	bash scripts/install-deps.sh

build: deps
	cmake --preset default
	cmake --build --preset default -j $(JOBS)

deps-demo:
	bash scripts/install-deps.sh --demo

build-demo: deps-demo
	cmake --preset demo
	cmake --build --preset demo -j $(JOBS)

demo: build-demo
	./build/demo/tools/pixturn demo demo-output

test: test-default test-asan test-tsan test-m32 test-armhf test-arm64 test-mac-x86-64 test-mac-arm64 test-win-arm64 test-win64 test-win32 fuzz test-package

test-default: build
	ctest --preset default

# Each preset's own build directory: configured, built and its tests run.
PRESET_TESTS := asan tsan m32 armhf arm64 mac-x86-64 mac-arm64 win-arm64 win64
$(addprefix test-,$(PRESET_TESTS)): test-%: deps
	cmake --preset $*
	cmake --build --preset $* -j $(JOBS)
	ctest --preset $*

# Debian 12's 32-bit Wine (the i386 package wine32) is not installed
# (docs/reliability.md says why): the DLL is checked, not run.
test-win32: deps
	cmake --preset win32
	cmake --build --preset win32 -j $(JOBS)
	bash scripts/check-dll.sh build/win32/PixTurn.dll i386

fuzz: deps
	JOBS=$(JOBS) bash scripts/fuzz.sh 60

# Last in test: by then the targets' test steps have built their libraries in
# the folders make package takes them from.
test-package: package
	bash scripts/check-package.sh

package: deps
	JOBS=$(JOBS) bash scripts/package.sh

fuzz-long: deps
	JOBS=$(JOBS) bash scripts/fuzz.sh $(FUZZ_SECONDS) $(FUZZ_RUNS)

# Which lines of the plug-in the committed fuzz corpus reaches (llvm-cov).
coverage: deps
	JOBS=$(JOBS) bash scripts/coverage.sh

# Each fault of scripts/mutants/*.txt in turn, in a copy of the tree under
# build/mutants; fails if the tests miss one. Never part of test.
mutants: deps
	JOBS=$(JOBS) bash scripts/mutants.sh

# The benchmark against peer libraries: installs them, builds, runs and prints the
# comparison. Never part of test.
bench:
	bash scripts/install-bench-deps.sh
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS)
	./build/bench/bench/pixturn_bench --benchmark_out=build/bench/bench-results.json --benchmark_out_format=json

# Each pixturn command and ImageMagick's convert doing the same on a 4000 x 3000
# PNG and JPEG, side by side (bench/cli.sh); installs ImageMagick if missing.
bench-cli: build-demo
	bash scripts/install-missing.sh imagemagick
	bash bench/cli.sh build/demo/tools/pixturn

clean:
	rm -rf build demo-output
