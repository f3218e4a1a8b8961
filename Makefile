# The two commands of the README, and a few helpers for developers.
#   make demo   install what is missing, build, start the studio with demo data
#   make test   install what is missing, build, run every test with ctest
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZR_WERROR=ON -DZR_FORCE_ASSERTS=ON

.PHONY: all deps configure build test demo format clean

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

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)
