# Front door. `make demo` and `make test` do everything on a bare Debian or Ubuntu machine.
.PHONY: all demo test build deps test-deps fuzz coverage bench lint format clean package check-package docs

JOBS := $(shell nproc)
FUZZ_SECONDS ?= 60

all: build

deps:
	@scripts/install_packages.sh build

test-deps:
	@scripts/install_packages.sh test

# The programs alone, optimised.
build: deps
	@cmake --preset release -DMEDIASPLIT_TESTS=OFF >/dev/null
	@cmake --build --preset release -j $(JOBS) --target mediasplit mediasplit-report

demo: build
	@scripts/demo.sh

test: test-deps
	@scripts/run_tests.sh

# The Debian package, in build/package.
package:
	@scripts/install_packages.sh package
	@scripts/package.sh

# Builds the package twice, compares the bytes, and runs the demo with it in a bare system.
check-package:
	@scripts/install_packages.sh package
	@scripts/check_package.sh

# The pages of docs/ that are made from the sources.
docs: deps
	@cmake --preset release -DMEDIASPLIT_TESTS=OFF >/dev/null
	@cmake --build --preset release -j $(JOBS) --target docs

# Every harness for FUZZ_SECONDS each.
fuzz: test-deps
	@STAGES=fuzz FUZZ_SECONDS=$(FUZZ_SECONDS) scripts/run_tests.sh

# Lines of the readers that the fuzz corpus runs through.
coverage: test-deps
	@cmake --preset coverage >/dev/null
	@cmake --build --preset coverage -j $(JOBS) --target fuzz_harnesses
	@scripts/coverage.py

bench: test-deps
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench -j $(JOBS)
	@bench/run.sh

lint: test-deps
	@cmake --preset debug >/dev/null
	@scripts/lint.sh

format: test-deps
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf build out
