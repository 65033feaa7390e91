"""The module of Visual Basic declarations is the one that scripts/generate-declares makes of the public header."""
import importlib.machinery
import importlib.util

import house


def generator(project):
    """scripts/generate-declares as a module."""
    loader = importlib.machinery.SourceFileLoader("generate_declares", str(project / "scripts/generate-declares"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


def problems(project):
    made = generator(project)
    header = house.read(project / made.HEADER.relative_to(made.PROJECT))
    return made.differences(header, (project / made.MODULE.relative_to(made.PROJECT)).read_bytes())


if __name__ == "__main__":
    house.main(problems, "Visual Basic declarations")
