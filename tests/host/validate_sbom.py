#!/usr/bin/env python3
"""Validates SBOM documents written by `regscan inventory --format cyclonedx|spdx`.

Usage: validate_sbom.py cyclonedx|spdx FILE...

CycloneDX documents are validated against the CycloneDX 1.5 JSON schema in schemas/
(its two referenced schemas resolved from the same directory, never from the
network). SPDX documents are validated against schemas/spdx-schema.json when that
file exists. Both then get structural checks that a schema cannot express: unique
identifiers, relationships that point at packages, well-formed package URLs.
Prints one line per problem and exits 1 when there is any, 0 otherwise.
"""

import json
import os
import re
import sys

import jsonschema

SCHEMAS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "schemas")
PURL_SAFE = re.compile(r"^(?:[A-Za-z0-9._~:-]|%[0-9A-F]{2})*$")
SPDX_ID = re.compile(r"^SPDXRef-[A-Za-z0-9.-]+$")
CREATED = re.compile(r"^\d\d\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
SUPPLIER = re.compile(r"^(?:(?:Person|Organization): *\S.*|NOASSERTION)$")


def load_schema(name):
    with open(os.path.join(SCHEMAS, name), encoding="utf-8") as f:
        return json.load(f)


def schema_errors(document, main, others):
    """Errors of `document` against schemas/`main`; `others` are the files it refers to."""
    schema = load_schema(main)
    base = schema.get("$id", "")
    referenced = {name: load_schema(name) for name in others}
    cls = jsonschema.validators.validator_for(schema)
    try:
        from referencing import Registry, Resource  # jsonschema >= 4.18
        from referencing.jsonschema import specification_with

        dialect = specification_with(schema["$schema"])
        resources = []
        for name, other in referenced.items():
            resource = Resource.from_contents(other, default_specification=dialect)
            resources.append((base.rsplit("/", 1)[0] + "/" + name, resource))
        validator = cls(schema, registry=Registry().with_resources(resources),
                        format_checker=cls.FORMAT_CHECKER)
    except ImportError:
        store = {base.rsplit("/", 1)[0] + "/" + name: other for name, other in referenced.items()}
        resolver = jsonschema.RefResolver(base, schema, store=store)
        validator = cls(schema, resolver=resolver, format_checker=jsonschema.FormatChecker())
    return ["%s: %s" % ("/".join(str(p) for p in e.absolute_path), e.message)
            for e in validator.iter_errors(document)]


def purl_errors(purl):
    match = re.match(r"^pkg:([a-z][a-z0-9.+-]*)/([^@?#]+)(?:@([^?#]+))?(?:\?([^#]+))?$", purl)
    if not match:
        return ["malformed package URL " + purl]
    errors = []
    kind, name, version, qualifiers = match.groups()
    parts = [name] + ([version] if version else [])
    keys = []
    for qualifier in (qualifiers.split("&") if qualifiers else []):
        key, _, value = qualifier.partition("=")
        if not re.match(r"^[a-z][a-z0-9.-]*$", key) or not value:
            errors.append("bad qualifier %r in %s" % (qualifier, purl))
        keys.append(key)
        parts.append(value)
    if keys != sorted(set(keys)):
        errors.append("qualifiers not sorted or repeated in " + purl)
    for part in parts:
        if not PURL_SAFE.match(part):
            errors.append("unencoded character in %r of %s" % (part, purl))
            continue
        raw = re.sub(r"%([0-9A-F]{2})", lambda m: "\\x" + m.group(1), part)
        try:
            raw.encode("latin-1").decode("unicode_escape").encode("latin-1").decode("utf-8")
        except (UnicodeDecodeError, UnicodeEncodeError):
            errors.append("percent-encoding is not UTF-8 in " + purl)
    bare = re.sub(r"%[0-9A-F]{2}", "", name)
    if kind == "deb" and bare != bare.lower():
        errors.append("deb name not in lower case in " + purl)
    return errors


def unique(ids, what):
    seen, errors = set(), []
    for i in ids:
        if i in seen:
            errors.append("duplicate %s %r" % (what, i))
        seen.add(i)
    return errors


def cyclonedx_errors(document):
    errors = schema_errors(document, "bom-1.5.SNAPSHOT.schema.json",
                           ["spdx.SNAPSHOT.schema.json", "jsf-0.82.SNAPSHOT.schema.json"])
    components = document.get("components", [])
    errors += unique([c.get("bom-ref") for c in components], "bom-ref")
    for component in components:
        if "purl" in component:
            errors += purl_errors(component["purl"])
    if not CREATED.match(document.get("metadata", {}).get("timestamp", "")):
        errors.append("timestamp is not a UTC date-time")
    return errors


def spdx_errors(document):
    errors = []
    if os.path.exists(os.path.join(SCHEMAS, "spdx-schema.json")):
        errors += schema_errors(document, "spdx-schema.json", [])
    for member, value in (("spdxVersion", "SPDX-2.3"), ("dataLicense", "CC0-1.0"),
                          ("SPDXID", "SPDXRef-DOCUMENT")):
        if document.get(member) != value:
            errors.append("%s is not %s" % (member, value))
    for member in ("name", "documentNamespace"):
        if not isinstance(document.get(member), str) or not document[member]:
            errors.append("no " + member)
    if "#" in document.get("documentNamespace", "#") or ":" not in document["documentNamespace"]:
        errors.append("documentNamespace is not a URI without '#'")
    info = document.get("creationInfo", {})
    if not CREATED.match(info.get("created", "")) or not info.get("creators"):
        errors.append("creationInfo lacks its time or creators")
    packages = document.get("packages", [])
    ids = [p.get("SPDXID", "") for p in packages]
    errors += unique(["SPDXRef-DOCUMENT"] + ids, "SPDXID")
    for package in packages:
        where = "package %r: " % package.get("SPDXID")
        if not SPDX_ID.match(package.get("SPDXID", "")):
            errors.append(where + "bad SPDXID")
        if not isinstance(package.get("name"), str):
            errors.append(where + "no name")
        if package.get("downloadLocation") != "NOASSERTION":
            errors.append(where + "downloadLocation")
        if not SUPPLIER.match(package.get("supplier", "")):
            errors.append(where + "bad supplier %r" % package.get("supplier"))
        for ref in package.get("externalRefs", []):
            if (ref.get("referenceCategory"), ref.get("referenceType")) != ("PACKAGE-MANAGER",
                                                                             "purl"):
                errors.append(where + "unexpected external reference")
            errors += purl_errors(ref.get("referenceLocator", ""))
        for annotation in package.get("annotations", []):
            if (annotation.get("annotationType") not in ("OTHER", "REVIEW")
                    or not CREATED.match(annotation.get("annotationDate", ""))
                    or not annotation.get("annotator", "").startswith("Tool: ")
                    or not isinstance(annotation.get("comment"), str)):
                errors.append(where + "bad annotation")
    described = set()
    for relation in document.get("relationships", []):
        if relation.get("relatedSpdxElement") not in ids or relation.get(
                "spdxElementId") != "SPDXRef-DOCUMENT":
            errors.append("relationship to an unknown element: %r" % relation)
        if relation.get("relationshipType") == "DESCRIBES":
            described.add(relation.get("relatedSpdxElement"))
    if described != set(ids):
        errors.append("not every package is described by the document")
    return errors


def main(argv):
    if len(argv) < 3 or argv[1] not in ("cyclonedx", "spdx"):
        print(__doc__.strip().splitlines()[2], file=sys.stderr)
        return 2
    check = cyclonedx_errors if argv[1] == "cyclonedx" else spdx_errors
    failed = False
    for path in argv[2:]:
        try:
            with open(path, encoding="utf-8") as f:
                document = json.load(f)
        except (OSError, ValueError) as error:
            print("%s: %s" % (path, error))
            failed = True
            continue
        for error in check(document):
            print("%s: %s" % (path, error))
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
