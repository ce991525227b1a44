"""The type stub against the module: every function, method and property the module defines,
found by introspection, with the same parameters (names, kinds, defaults) and decorators, and
nothing in the stub that the module lacks."""
import ast
import inspect
import pathlib
import re

from ostrel import geometry

STUB = ast.parse((pathlib.Path(__file__).parents[2] / "src/ostrel/geometry.pyi").read_text())
P = inspect.Parameter


def decorators(node):
    return {ast.unparse(d) for d in node.decorator_list}


def stub_parameters(node):
    a = node.args
    positional = a.posonlyargs + a.args
    defaults = [None] * (len(positional) - len(a.defaults)) + a.defaults
    kinds = [P.POSITIONAL_ONLY] * len(a.posonlyargs) + [P.POSITIONAL_OR_KEYWORD] * len(a.args)
    result = list(zip([p.arg for p in positional], kinds, defaults))
    result += [(a.vararg.arg, P.VAR_POSITIONAL, None)] if a.vararg else []
    result += [(p.arg, P.KEYWORD_ONLY, d) for p, d in zip(a.kwonlyargs, a.kw_defaults)]
    result += [(a.kwarg.arg, P.VAR_KEYWORD, None)] if a.kwarg else []
    # A default is evaluated in the module's namespace, as the module evaluates its own.
    return [(name, kind.name, None if d is None else repr(eval(ast.unparse(d), vars(geometry))))
            for name, kind, d in result]


def module_parameters(function):
    # Defaults as source text: literals by repr, objects by their repr too (e.g. Color(221, 221, 221)).
    return [(p.name, p.kind.name, None if p.default is P.empty else repr(p.default))
            for p in inspect.signature(function).parameters.values()]


def stub_members(body):
    """Name -> list of the stub's definitions of that name (a property and its setter are two)."""
    members = {}
    for node in body:
        if isinstance(node, (ast.FunctionDef, ast.ClassDef)):
            members.setdefault(node.name, []).append(node)
        elif isinstance(node, (ast.AnnAssign, ast.Assign)):
            for target in node.targets if isinstance(node, ast.Assign) else [node.target]:
                members.setdefault(ast.unparse(target), []).append(node)
    return members


def check(owner, name, member, stubbed):
    """The differences between a member of the module and its definitions in the stub; a
    docstring that names the native code's scopes (a rename gone through code and texts alike)
    is one too."""
    documented = member.fget if isinstance(member, property) else getattr(member, "__func__", member)
    if re.search(r"::|\bkernel\b|PyObject|\bRef\b", documented.__doc__ or ""):
        return [f"{owner}.{name}: docstring {documented.__doc__!r}"] + differences(owner, name, member, stubbed)
    return differences(owner, name, member, stubbed)


def differences(owner, name, member, stubbed):
    definitions = [n for n in stubbed.get(name, []) if isinstance(n, ast.FunctionDef)]
    if not definitions:
        return [f"{owner}.{name}: missing"]
    marks, problems = decorators(definitions[0]), []
    if isinstance(member, property):
        setter = any(f"{name}.setter" in decorators(n) for n in definitions)
        problems += ["not a @property"] * ("property" not in marks) + ["setter"] * (setter != (member.fset is not None))
        member = member.fget
    else:
        problems += [kind.__name__ for kind in (property, staticmethod, classmethod)
                     if (kind.__name__ in marks) != isinstance(member, kind)]
        member = getattr(member, "__func__", member)
    if ("abstractmethod" in marks) != getattr(member, "__isabstractmethod__", False):
        problems.append("abstractmethod")
    if stub_parameters(definitions[0]) != module_parameters(member):
        problems.append(f"parameters {stub_parameters(definitions[0])} != {module_parameters(member)}")
    return [f"{owner}.{name}: {problem}" for problem in problems]


def test_stub_matches_the_module():
    top, problems = stub_members(STUB.body), []
    for name, value in vars(geometry).items():
        if isinstance(value, type) and value.__module__ == geometry.__name__:
            classes = [n for n in top.get(name, []) if isinstance(n, ast.ClassDef)]
            if not classes:
                problems.append(f"class {name}: missing")
                continue
            body = stub_members(classes[0].body)
            if [ast.unparse(b) for b in classes[0].bases] != [b.__name__ for b in value.__bases__ if b is not object]:
                problems.append(f"class {name}: bases")
            for member_name, member in vars(value).items():
                if isinstance(member, (property, staticmethod, classmethod)) or inspect.isroutine(member):
                    problems += check(name, member_name, member, body)
            problems += [f"{name}.{n}: not in the class" for n, nodes in body.items()
                         if n not in vars(value) and any(isinstance(d, ast.FunctionDef) for d in nodes)]
        elif inspect.isroutine(value) and getattr(value, "__module__", None) == geometry.__name__:
            problems += check("geometry", name, value, top)
    problems += [f"{n}: not in the module" for n in top if not hasattr(geometry, n)]
    assert not problems, "\n".join(problems)
