#!/usr/bin/env python3
"""Checks, without an Android tree, that the files the Android build reads agree with the code.

Usage: check_android_tree.py [ROOT]   (default: the repository holding this script)

Prints one line per problem, "[check] file: message", and exits 1 if there is any, 0 otherwise.
Needs python3 and Debian's `aidl` compiler (package aidl) on PATH.
"""

import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import blueprint  # noqa: E402

SKIPPED_DIRS = {".git", "out", ".cache"}
# Properties whose values are paths relative to the module's folder.
PATH_PROPS = {"srcs", "exclude_srcs", "init_rc", "vintf_fragments", "data", "export_include_dirs",
              "local_include_dirs", "version_script", "test_config", "dictionary", "corpus"}
DEP_PROPS = {"shared_libs", "static_libs", "whole_static_libs", "header_libs", "defaults",
             "runtime_libs", "required", "export_static_lib_headers",
             "export_shared_lib_headers", "export_header_lib_headers"}
# Folders whose C++ sources are the device build's: each must appear in some module.
DEVICE_SOURCE_DIRS = ("service", "sensor", "config", "aidl", "tools/tpsctl", "fuzz/service")
# Host-only sources allowed in those folders (the hand-kept NDK backend is generated on a device).
HOST_ONLY_SOURCES = {"aidl/vendor/tavix/tps/ITps.cpp", "aidl/vendor/tavix/tps/ITpsCallback.cpp"}
HOST_STAND_IN_NAMES = re.compile(r"^host_|^tps_(config|filters|sensor|aidl|service|clock)$")
CONFIG_FS = "device/config.fs"


def _strip_json_comments(text):
    return "\n".join(line for line in text.splitlines() if not line.lstrip().startswith("//"))


def _strings(value):
    """Every string inside a Blueprint value, recursively."""
    if isinstance(value, str):
        yield value
    elif isinstance(value, list):
        for item in value:
            yield from _strings(item)
    elif isinstance(value, dict):
        for item in value.values():
            yield from _strings(item)


def _props_named(value, names):
    """(key, value) pairs for keys in `names` at any depth (target: { android: {...} } too)."""
    if isinstance(value, dict):
        for key, item in value.items():
            if key in names:
                yield key, item
            yield from _props_named(item, names)
    elif isinstance(value, list):
        for item in value:
            yield from _props_named(item, names)


def _merge(base, extra):
    merged = dict(base)
    for key, value in extra.items():
        old = merged.get(key)
        if isinstance(old, list) and isinstance(value, list):
            merged[key] = old + value
        elif isinstance(old, dict) and isinstance(value, dict):
            merged[key] = _merge(old, value)
        else:
            merged[key] = value
    return merged


def _as_list(value):
    if value is None:
        return []
    return value if isinstance(value, list) else [value]


class Checker:
    def __init__(self, root):
        self.root = os.path.abspath(root)
        self.problems = []
        self.modules = []

    # -- plumbing ---------------------------------------------------------------------------

    def fail(self, check, where, message):
        where = os.path.relpath(where, self.root) if os.path.isabs(where) else where
        self.problems.append(f"[{check}] {where}: {message}")

    def path(self, *parts):
        return os.path.join(self.root, *parts)

    def read(self, relative):
        with open(self.path(relative), encoding="utf-8") as handle:
            return handle.read()

    def module_dir(self, module):
        return os.path.dirname(module.path)

    def effective_props(self, module, seen=()):
        """The module's properties with its defaults applied (lists appended, maps merged)."""
        merged = {}
        for name in _as_list(module.props.get("defaults")):
            parent = self.module_named(name)
            if parent is not None and name not in seen:
                merged = _merge(merged, self.effective_props(parent, seen + (name,)))
        own = {k: v for k, v in module.props.items() if k not in ("defaults", "name")}
        merged = _merge(merged, own)
        merged["name"] = module.name
        return merged

    def modules_of_type(self, *types):
        return [m for m in self.modules if m.type in types]

    def module_named(self, name):
        return next((m for m in self.modules if m.name == name), None)

    def run(self):
        self.load_blueprints()
        for check in (self.check_paths, self.check_no_platform, self.check_dependencies,
                      self.check_unlisted_sources, self.check_aidl, self.check_identity,
                      self.check_init, self.check_sepolicy, self.check_test_mapping):
            check()
        return self.problems

    # -- Blueprint files --------------------------------------------------------------------

    def blueprint_files(self):
        found = []
        for folder, dirs, files in os.walk(self.root):
            dirs[:] = sorted(d for d in dirs
                             if d not in SKIPPED_DIRS and not d.startswith("build"))
            if "Android.bp" in files:
                found.append(os.path.join(folder, "Android.bp"))
        return found

    def load_blueprints(self):
        for bp in self.blueprint_files():
            try:
                self.modules.extend(blueprint.parse_file(bp))
            except blueprint.BlueprintError as error:
                self.fail("blueprint", bp, f"line {error.line}: {error.message}")
        names = {}
        for module in self.modules:
            if module.name is None:
                self.fail("blueprint", module.path, f"{module.type} on line {module.line} "
                          "has no name")
            elif module.name in names:
                self.fail("blueprint", module.path, f"module {module.name} is also defined in "
                          f"{os.path.relpath(names[module.name], self.root)}")
            else:
                names[module.name] = module.path

    def derived_names(self):
        """Modules the Android build derives from aidl_interface modules."""
        names = set()
        for module in self.modules_of_type("aidl_interface"):
            for info in _as_list(module.props.get("versions_with_info")):
                for backend in ("ndk", "cpp", "java", "rust"):
                    names.add(f"{module.name}-V{info.get('version')}-{backend}")
            names.add(f"{module.name}-api")
        return names

    def check_paths(self):
        """Every path a module lists exists; every :reference names a module."""
        defined = {m.name for m in self.modules} | self.derived_names()
        for module in self.modules:
            base = self.module_dir(module)
            for key, value in _props_named(module.props, PATH_PROPS):
                for entry in _strings(value):
                    if entry.startswith(":"):
                        if entry[1:].split("{")[0] not in defined:
                            self.fail("paths", module.path, f"{module.name}: {key} refers to "
                                      f"undefined module {entry}")
                        continue
                    if any(c in entry for c in "*?["):
                        if not glob.glob(os.path.join(base, entry), recursive=True):
                            self.fail("paths", module.path,
                                      f"{module.name}: {key} pattern {entry} matches nothing")
                    elif not os.path.exists(os.path.join(base, entry)) and key != "exclude_srcs":
                        self.fail("paths", module.path,
                                  f"{module.name}: {key} names missing {entry}")

    def check_no_platform(self):
        """The host stand-ins must never reach the device build."""
        platform_dir = self.path("platform")
        for bp in self.blueprint_files():
            if os.path.commonpath([bp, platform_dir]) == platform_dir:
                self.fail("platform", bp, "Android.bp inside the host-only platform/ folder")
        for module in self.modules:
            base = self.module_dir(module)
            for entry in _strings(module.props):
                resolved = os.path.normpath(os.path.join(base, entry.lstrip(":")))
                if (os.path.commonpath([resolved, platform_dir]) == platform_dir
                        or re.search(r"(^|/)platform(/|$)", entry)):
                    self.fail("platform", module.path, f"{module.name} names {entry}")
            for _, value in _props_named(module.props, DEP_PROPS):
                for dep in _strings(value):
                    if HOST_STAND_IN_NAMES.search(dep):
                        self.fail("platform", module.path,
                                  f"{module.name} depends on host target {dep}")

    def check_dependencies(self):
        """Dependencies on this project's own modules resolve."""
        defined = {m.name for m in self.modules} | self.derived_names()
        own_prefixes = tuple(m.name.split("-")[0] for m in self.modules_of_type("aidl_interface"))
        for module in self.modules:
            for key, value in _props_named(module.props, DEP_PROPS):
                for dep in _strings(value):
                    if dep.startswith(own_prefixes) and dep not in defined:
                        self.fail("deps", module.path, f"{module.name}: {key} names undefined "
                                  f"module {dep}")

    def listed_sources(self):
        listed = set()
        for module in self.modules:
            base = self.module_dir(module)
            for _, value in _props_named(module.props, {"srcs"}):
                for entry in _strings(value):
                    if entry.startswith(":"):
                        continue
                    for match in glob.glob(os.path.join(base, entry), recursive=True):
                        listed.add(os.path.relpath(os.path.abspath(match), self.root))
        return listed

    def check_unlisted_sources(self):
        """A source file added to a device folder but to no module would be missing on a device."""
        listed = self.listed_sources()
        for folder in DEVICE_SOURCE_DIRS:
            for source in glob.glob(self.path(folder, "**", "*.cpp"), recursive=True):
                relative = os.path.relpath(source, self.root)
                if relative not in listed and relative not in HOST_ONLY_SOURCES:
                    self.fail("unlisted", relative, "no Android.bp module builds this source")

    # -- interfaces -------------------------------------------------------------------------

    def interface_module(self):
        modules = self.modules_of_type("aidl_interface")
        if len(modules) != 1:
            self.fail("aidl", "aidl/Android.bp", f"expected one aidl_interface, found "
                      f"{len(modules)}")
            return None
        return modules[0]

    def frozen_versions(self, module):
        versions = []
        for info in _as_list(module.props.get("versions_with_info")):
            try:
                versions.append(int(info.get("version")))
            except (TypeError, ValueError):
                self.fail("aidl", module.path, f"bad versions_with_info entry {info}")
        return sorted(versions)

    def check_aidl(self):
        module = self.interface_module()
        if module is None:
            return
        props = module.props
        expected = {"stability": "vintf", "frozen": True, "vendor_available": True}
        for key, value in expected.items():
            if props.get(key) != value:
                self.fail("aidl", module.path, f"{module.name}: {key} must be {value!r}, "
                          f"found {props.get(key)!r}")
        if not props.get("owner"):
            self.fail("aidl", module.path, f"{module.name}: owner is not set")
        backend = props.get("backend", {})
        for name in ("cpp", "java"):
            if backend.get(name, {}).get("enabled", True):
                self.fail("aidl", module.path, f"{module.name}: the {name} backend is enabled")
        if backend.get("ndk", {}).get("enabled", True) is False:
            self.fail("aidl", module.path, f"{module.name}: the ndk backend is disabled")
        versions = self.frozen_versions(module)
        if not versions:
            self.fail("aidl", module.path, f"{module.name}: no frozen version")
        base = self.module_dir(module)
        api_dir = os.path.join(base, "aidl_api", module.name)
        for version in versions:
            if not os.path.isfile(os.path.join(api_dir, str(version), ".hash")):
                self.fail("aidl", module.path, f"{module.name}: version {version} has no "
                          "snapshot with a .hash")
        hash_script = os.path.join(base, "check-api-hash.sh")
        if os.path.isfile(hash_script):
            result = subprocess.run(["bash", hash_script, base], capture_output=True, text=True)
            if result.returncode != 0:
                for line in (result.stderr or result.stdout).splitlines():
                    self.fail("aidl", hash_script, line)
        else:
            self.fail("aidl", hash_script, "missing; the frozen hash cannot be checked")
        sources = []
        for pattern in _as_list(props.get("srcs")):
            sources.extend(glob.glob(os.path.join(base, pattern)))
        if versions:
            latest = os.path.join(api_dir, str(versions[-1]))
            self.compile_aidl(module, base, sources, check_codes=True)
            self.compile_aidl(module, latest,
                              glob.glob(os.path.join(latest, "**", "*.aidl"), recursive=True))

    def compile_aidl(self, module, include_root, files, check_codes=False):
        """Runs Debian's aidl compiler (NDK output) over the files, annotations it lacks removed."""
        if not files:
            self.fail("aidl", module.path, f"no .aidl files under {include_root}")
            return
        compiler = shutil.which("aidl")
        if compiler is None:
            self.fail("aidl", module.path, "the aidl compiler is not installed (package aidl)")
            return
        with tempfile.TemporaryDirectory() as temp:
            src = os.path.join(temp, "src")
            copies = []
            for source in files:
                relative = os.path.relpath(source, include_root)
                copy = os.path.join(src, relative)
                os.makedirs(os.path.dirname(copy), exist_ok=True)
                with open(source, encoding="utf-8") as handle:
                    text = handle.read()
                with open(copy, "w", encoding="utf-8") as handle:
                    handle.write(re.sub(r"@VintfStability\b", "", text))
                copies.append(copy)
            for copy in copies:
                result = subprocess.run(
                    [compiler, "--lang=ndk", "--structured", "-I", src, "-o",
                     os.path.join(temp, "out"), "-h", os.path.join(temp, "include"), copy],
                    capture_output=True, text=True)
                if result.returncode != 0:
                    where = os.path.relpath(files[copies.index(copy)], self.root)
                    message = (result.stderr or result.stdout).strip().replace(temp, "")
                    self.fail("aidl", where, f"aidl rejects it: {message}")
            if check_codes:
                self.check_transaction_codes(compiler, src, copies, files, temp)

    def check_transaction_codes(self, compiler, src, copies, files, temp):
        """The hand-kept NDK headers number the methods as the compiler orders them."""
        dump = os.path.join(temp, "dump")
        result = subprocess.run([compiler, "--dumpapi", "--structured", f"--out={dump}", "-I", src]
                                + copies, capture_output=True, text=True)
        if result.returncode != 0:
            return  # the compile step has reported why
        for copy, source in zip(copies, files):
            relative = os.path.relpath(copy, src)
            header = self.path("aidl", "include", "aidl", relative[:-len(".aidl")] + ".h")
            if not os.path.isfile(header):
                continue
            with open(os.path.join(dump, relative), encoding="utf-8") as handle:
                methods = re.findall(r"^\s+[\w.<>\[\], ]+?\s(\w+)\(", handle.read(), re.M)
            with open(header, encoding="utf-8") as handle:
                declared = dict(re.findall(r"TRANSACTION_(\w+)\s*=\s*FIRST_CALL_TRANSACTION\s*"
                                           r"\+\s*(\d+)", handle.read()))
            for index, method in enumerate(methods):
                if declared.get(method) != str(index):
                    self.fail("aidl", header, f"TRANSACTION_{method} is "
                              f"{declared.get(method, 'missing')}, but {method} is method "
                              f"{index} of {os.path.relpath(source, self.root)}")

    # -- identity: descriptor, version, instance --------------------------------------------

    def interface_identity(self, module):
        """(package, interface, descriptor) of the service interface, from its .aidl source."""
        base = self.module_dir(module)
        for pattern in _as_list(module.props.get("srcs")):
            for source in sorted(glob.glob(os.path.join(base, pattern))):
                with open(source, encoding="utf-8") as handle:
                    text = handle.read()
                package = re.search(r"^\s*package\s+([\w.]+)\s*;", text, re.M)
                if package and os.path.basename(source) == "ITps.aidl":
                    return package.group(1), "ITps", f"{package.group(1)}.ITps"
        self.fail("identity", module.path, "no ITps.aidl among the interface sources")
        return None

    def registered_instance(self, descriptor):
        """The instance name service/main.cpp registers, as the code spells it."""
        main = "service/main.cpp"
        if not os.path.isfile(self.path(main)):
            self.fail("identity", main, "missing; the registered instance cannot be read")
            return None
        code = re.sub(r"//[^\n]*|/\*.*?\*/", "", self.read(main), flags=re.S)
        if "AServiceManager_addService" not in code:
            self.fail("identity", main, "does not call AServiceManager_addService")
            return None
        literals = re.findall(r'"((?:[^"\\]|\\.)*)"', code)
        full = [s for s in literals if re.fullmatch(r"[\w.]+\.I\w+/[\w.-]+", s)]
        if full:
            return full[0]
        suffixes = [s for s in literals if re.fullmatch(r"/[\w.-]+", s)]
        if suffixes and re.search(r"\bdescriptor\b", code):
            return descriptor + suffixes[0]
        self.fail("identity", main, "cannot find the instance name it registers")
        return None

    def check_identity(self):
        module = self.interface_module()
        if module is None:
            return
        identity = self.interface_identity(module)
        versions = self.frozen_versions(module)
        if identity is None or not versions:
            return
        package, interface, descriptor = identity
        version = versions[-1]
        header = "aidl/include/aidl/vendor/tavix/tps/ITps.h"
        backend = "aidl/vendor/tavix/tps/ITps.cpp"
        if os.path.isfile(self.path(backend)):
            declared = re.search(r'ITps::descriptor\s*=\s*"([^"]*)"', self.read(backend))
            if declared and declared.group(1) != descriptor:
                self.fail("identity", backend, f"descriptor {declared.group(1)} differs from "
                          f"the interface's {descriptor}")
        if os.path.isfile(self.path(header)):
            declared = re.search(r"\bversion\s*=\s*(\d+)\s*;", self.read(header))
            if declared and int(declared.group(1)) != version:
                self.fail("identity", header, f"version {declared.group(1)} differs from the "
                          f"frozen version {version}")
        instance = self.registered_instance(descriptor)
        if instance is None:
            return
        if not instance.startswith(descriptor + "/"):
            self.fail("identity", "service/main.cpp", f"registers {instance}, which is not "
                      f"under the descriptor {descriptor}")
            return
        name = instance[len(descriptor) + 1:]
        self.check_manifest(package, interface, name, version)
        self.check_matrix(package, interface, name, version)
        self.check_service_contexts(instance)
        self.check_ndk_link(module.name, version)

    def service_binary(self):
        """The one binary init starts; reported once when missing or ambiguous."""
        if not hasattr(self, "_binary"):
            binaries = [m for m in self.modules_of_type("cc_binary") if m.props.get("init_rc")]
            self._binary = binaries[0] if len(binaries) == 1 else None
            if self._binary is None:
                self.fail("init", "service/Android.bp", "expected one cc_binary with init_rc, "
                          f"found {len(binaries)}")
        return self._binary

    def parse_xml(self, where):
        try:
            return ElementTree.parse(where).getroot()
        except (ElementTree.ParseError, OSError) as error:
            self.fail("vintf", where, f"cannot read it: {error}")
            return None

    def check_manifest(self, package, interface, instance, version):
        binary = self.service_binary()
        if binary is None:
            return
        fragments = _as_list(binary.props.get("vintf_fragments"))
        if not fragments:
            self.fail("vintf", binary.path, f"{binary.name} installs no vintf_fragments")
        wanted = f"{interface}/{instance}"
        for fragment in fragments:
            where = os.path.join(self.module_dir(binary), fragment)
            root = self.parse_xml(where)
            if root is None:
                continue
            if root.tag != "manifest" or root.get("type") != "device":
                self.fail("vintf", where, "is not a device manifest")
            hals = [h for h in root.findall("hal") if h.findtext("name", "").strip() == package]
            if not hals:
                self.fail("vintf", where, f"declares no hal named {package}")
            for hal in hals:
                if hal.get("format") != "aidl":
                    self.fail("vintf", where, f"{package} is not declared as an aidl hal")
                declared = hal.findtext("version", "").strip()
                if declared != str(version):
                    self.fail("vintf", where, f"{package} version {declared or '(none)'} "
                              f"differs from the frozen version {version}")
                fqnames = [f.text.strip() for f in hal.findall("fqname") if f.text]
                if wanted not in fqnames:
                    self.fail("vintf", where, f"declares {', '.join(fqnames) or 'no fqname'} "
                              f"but the service registers {wanted}")

    def check_matrix(self, package, interface, instance, version):
        matrices = glob.glob(self.path("device", "*matrix*.xml"))
        if not matrices:
            self.fail("vintf", "device", "no compatibility matrix declares the interface")
        for where in matrices:
            root = self.parse_xml(where)
            if root is None:
                continue
            if root.tag != "compatibility-matrix" or root.get("type") != "framework":
                self.fail("vintf", where, "is not a framework compatibility matrix")
            hals = [h for h in root.findall("hal") if h.findtext("name", "").strip() == package]
            if not hals:
                self.fail("vintf", where, f"declares no hal named {package}")
            for hal in hals:
                ranges = [v.text.strip() for v in hal.findall("version") if v.text]
                if not any(self.in_range(version, r) for r in ranges):
                    self.fail("vintf", where, f"{package} versions {ranges} exclude {version}")
                pairs = [(i.findtext("name", "").strip(),
                          [n.text.strip() for n in i.findall("instance") if n.text])
                         for i in hal.findall("interface")]
                if not any(n == interface and instance in names for n, names in pairs):
                    self.fail("vintf", where, f"{package} does not list {interface} instance "
                              f"{instance}")

    @staticmethod
    def in_range(version, text):
        low, _, high = text.partition("-")
        try:
            return int(low) <= version <= int(high or low)
        except ValueError:
            return False

    def check_ndk_link(self, interface_name, version):
        """The binary speaks the version the manifest declares."""
        binary = self.service_binary()
        if binary is None:
            return
        wanted = f"{interface_name}-V{version}-ndk"
        seen, pending, linked = set(), [binary], set()
        while pending:
            module = pending.pop()
            for _, value in _props_named(self.effective_props(module), DEP_PROPS):
                for dep in _strings(value):
                    linked.add(dep)
                    child = self.module_named(dep)
                    if child is not None and dep not in seen:
                        seen.add(dep)
                        pending.append(child)
        stale = sorted(d for d in linked
                       if d.startswith(interface_name + "-V") and d != wanted)
        if wanted not in linked:
            self.fail("deps", binary.path, f"{binary.name} does not link {wanted}")
        for dep in stale:
            self.fail("deps", binary.path, f"{binary.name} links {dep}, not {wanted}")

    # -- init, sepolicy ---------------------------------------------------------------------

    def install_path(self, module):
        props = self.effective_props(module)
        if props.get("vendor") or props.get("soc_specific") or props.get("proprietary"):
            partition = "/vendor"
        elif props.get("device_specific"):
            partition = "/odm"
        elif props.get("product_specific"):
            partition = "/product"
        else:
            partition = "/system"
        parts = [partition, "bin"]
        if props.get("relative_install_path"):
            parts.append(props["relative_install_path"])
        parts.append(props.get("stem", module.name))
        return "/".join(parts)

    def rc_services(self, where):
        services = []
        current = None
        with open(where, encoding="utf-8") as handle:
            for line in handle:
                words = line.split()
                if not words or words[0].startswith("#"):
                    continue
                if not line[0].isspace():
                    current = None
                    if words[0] == "service" and len(words) >= 3:
                        current = {"name": words[1], "path": words[2], "options": {}}
                        services.append(current)
                elif current is not None:
                    current["options"][words[0]] = words[1:]
        return services

    def check_init(self):
        binary = self.service_binary()
        if binary is None:
            return
        installed = self.install_path(binary)
        for rc in _as_list(binary.props.get("init_rc")):
            where = os.path.join(self.module_dir(binary), rc)
            if not os.path.isfile(where):
                continue  # reported by the paths check
            services = self.rc_services(where)
            if not services:
                self.fail("init", where, "defines no service")
            for service in services:
                if service["path"] != installed:
                    self.fail("init", where, f"service {service['name']} runs {service['path']} "
                              f"but {binary.name} installs to {installed}")
                options = service["options"]
                if options.get("class", [None])[0] != "hal":
                    self.fail("init", where, f"service {service['name']} is not class hal")
                for key in ("user", "group"):
                    for account in options.get(key, [])[:1]:
                        if account not in ("root", "system") and not self.aid_defined(account):
                            self.fail("init", where, f"{key} {account} is not defined in "
                                      f"{CONFIG_FS}")
        self.check_file_contexts(installed)

    def aid_defined(self, account):
        if not os.path.isfile(self.path(CONFIG_FS)):
            return False
        return f"[AID_{account.upper()}]" in self.read(CONFIG_FS)

    def sepolicy_types(self):
        declared = set()
        for te in glob.glob(self.path("sepolicy", "*.te")):
            with open(te, encoding="utf-8") as handle:
                text = handle.read()
            declared.update(re.findall(r"^\s*type\s+(\w+)", text, re.M))
            declared.update(re.findall(r"vendor_internal_prop\((\w+)\)", text))
        return declared

    def contexts_lines(self, name):
        where = self.path("sepolicy", name)
        if not os.path.isfile(where):
            self.fail("sepolicy", where, "missing")
            return []
        lines = []
        with open(where, encoding="utf-8") as handle:
            for line in handle:
                words = line.split()
                if words and not words[0].startswith("#"):
                    lines.append(words)
        return lines

    def label_type(self, context):
        parts = context.split(":")
        return parts[2] if len(parts) >= 4 else None

    def check_file_contexts(self, installed):
        types = self.sepolicy_types()
        matched = [w for w in self.contexts_lines("file_contexts")
                   if re.fullmatch(w[0], installed)]
        if not matched:
            self.fail("sepolicy", "sepolicy/file_contexts", f"no entry labels {installed}")
        for words in matched:
            label = self.label_type(words[-1])
            if label not in types:
                self.fail("sepolicy", "sepolicy/file_contexts",
                          f"{installed} gets type {label}, which sepolicy/ does not declare")

    def check_service_contexts(self, instance):
        types = self.sepolicy_types()
        entries = [w for w in self.contexts_lines("service_contexts") if w[0] == instance]
        if not entries:
            self.fail("sepolicy", "sepolicy/service_contexts", f"no entry for {instance}")
        for words in entries:
            if self.label_type(words[1]) not in types:
                self.fail("sepolicy", "sepolicy/service_contexts",
                          f"{instance} gets an undeclared type {words[1]}")

    def code_properties(self):
        """Vendor property names spelt as string literals in the service's sources."""
        found = {}
        interface = self.interface_prefix() + "."
        for folder in ("service", "sensor", "config"):
            for source in glob.glob(self.path(folder, "**", "*.*"), recursive=True):
                if not source.endswith((".cpp", ".h")):
                    continue
                with open(source, encoding="utf-8", errors="replace") as handle:
                    literals = re.findall(r'"([\w.]+)"', handle.read())
                for prop in literals:
                    if (prop.startswith(("persist.vendor.", "ro.vendor.", "vendor."))
                            and not prop.startswith(interface) and prop.count(".") >= 2):
                        found.setdefault(prop, os.path.relpath(source, self.root))
        return found

    def check_sepolicy(self):
        """Every property the code names has a context, and property types exist."""
        types = self.sepolicy_types()
        entries = self.contexts_lines("property_contexts")
        for words in entries:
            if len(words) < 2 or self.label_type(words[1]) not in types:
                self.fail("sepolicy", "sepolicy/property_contexts",
                          f"{words[0]} gets an undeclared type")
        for prop, source in sorted(self.code_properties().items()):
            covered = any(prop == w[0] or (len(w) > 2 and w[2] == "prefix"
                                           and prop.startswith(w[0])) for w in entries)
            if not covered:
                self.fail("sepolicy", "sepolicy/property_contexts",
                          f"property {prop} used in {source} has no context")

    def interface_prefix(self):
        modules = self.modules_of_type("aidl_interface")
        return modules[0].name if modules else "\0"

    # -- TEST_MAPPING -----------------------------------------------------------------------

    def check_test_mapping(self):
        tests = {m.name for m in self.modules
                 if m.type.startswith("cc_test") or m.type in ("cc_fuzz", "sh_test",
                                                               "python_test_host")}
        mappings = []
        for folder, dirs, files in os.walk(self.root):
            dirs[:] = [d for d in dirs if d not in SKIPPED_DIRS and not d.startswith("build")]
            if "TEST_MAPPING" in files:
                mappings.append(os.path.join(folder, "TEST_MAPPING"))
        if not mappings:
            self.fail("tests", "TEST_MAPPING", "missing")
        for where in mappings:
            try:
                with open(where, encoding="utf-8") as handle:
                    mapping = json.loads(_strip_json_comments(handle.read()))
            except json.JSONDecodeError as error:
                self.fail("tests", where, f"not valid JSON: {error}")
                continue
            for group, entries in mapping.items():
                if group == "imports":
                    continue
                for entry in entries:
                    if entry.get("name") not in tests:
                        self.fail("tests", where, f"{group} runs {entry.get('name')}, which "
                                  "no Android.bp defines as a test")


def main(argv):
    if len(argv) > 2 or (len(argv) == 2 and argv[1] in ("-h", "--help")):
        print(__doc__.strip())
        return 2
    root = argv[1] if len(argv) == 2 else os.path.join(os.path.dirname(__file__), "..", "..")
    problems = Checker(root).run()
    for problem in problems:
        print(problem)
    if problems:
        print(f"android tree check: {len(problems)} problem(s)")
        return 1
    print("android tree check: ok")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
