# The two commands of the README, and a few helpers for developers.
#   make demo   install what is missing, build, start the studio with demo data
#   make test   install what is missing, build, run every test with ctest
#   make sanitize  the same tests on a Debug build with AddressSanitizer and UBSan
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZR_WERROR=ON -DZR_FORCE_ASSERTS=ON

SANITIZE_DIR ?= build-sanitize
SANITIZE_ENV = QT_QPA_PLATFORM=offscreen \
	ASAN_OPTIONS=detect_leaks=1:check_initialization_order=1:detect_stack_use_after_return=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/sanitize/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

.PHONY: all deps configure build test demo sanitize format clean

all: build

deps:
	@scripts/install-deps.sh

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja $(CMAKE_FLAGS)

configure: deps $(BUILD_DIR)/build.ninja

build: configure
	cmake --build $(BUILD_DIR) --parallel $(JOBS)

test: build
	cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel $(JOBS) --timeout 300

demo: build
	@scripts/run-demo.sh $(BUILD_DIR)

# A report from a sanitizer makes its test fail; the suppressions name only leaks of the
# system's libraries, never of ours.
sanitize: deps
	cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZR_WERROR=ON -DZR_SANITIZE=ON
	cmake --build $(SANITIZE_DIR) --parallel $(JOBS)
	cd $(SANITIZE_DIR) && $(SANITIZE_ENV) ctest --output-on-failure --parallel $(JOBS) --timeout 900

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR)
