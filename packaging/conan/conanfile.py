"""Builds the library of the checkout that this recipe stands in."""

import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load


class QuorlanToolsRecipe(ConanFile):
    name = "quorlan-tools"
    description = "Geometry and model tools for building models"
    package_type = "shared-library"
    settings = "os", "compiler", "build_type", "arch"

    def _root(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        project = load(self, os.path.join(self._root(), "CMakeLists.txt"))
        self.version = re.search(r"project\(QuorlanTools VERSION ([0-9.]+)", project).group(1)

    def export_sources(self):
        for folder in ("cmake", "include", "packaging", "schema", "src"):
            copy(self, folder + "/*", self._root(), self.export_sources_folder)
        copy(self, "CMakeLists.txt", self._root(), self.export_sources_folder)

    def requirements(self):
        self.requires("glm/[>=0.9.9]", transitive_headers=True)
        self.requires("flatbuffers/[>=2.0.8]")
        self.requires("earcut/[>=2.2.4 <3]")

    def build_requirements(self):
        self.tool_requires("flatbuffers/<host_version>")

    def validate(self):
        check_min_cppstd(self, 17)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        for part in ("APPS", "TESTS", "EXAMPLES"):
            toolchain.cache_variables["QUORLAN_BUILD_" + part] = False
        toolchain.cache_variables["QUORLAN_WERROR"] = False
        toolchain.cache_variables["QUORLAN_EARCUT_INCLUDE_DIR"] = self.dependencies["earcut"].cpp_info.includedirs[0]
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.libs = ["QuorlanTools"]
        self.cpp_info.set_property("cmake_file_name", "QuorlanTools")
        self.cpp_info.set_property("cmake_target_name", "Quorlan::Tools")
        self.cpp_info.set_property("pkg_config_name", "quorlan-tools")
