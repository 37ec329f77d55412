"""Checks a desired state on the controller: the document's schema, and the rules that need no look at the machine.

A fault has the place and the words that zelkctl would use; what is refused here is refused there as well.
"""
from __future__ import annotations

import ipaddress
import json
import os
import re
from typing import Any, Iterator, Optional, Union

Address = Union[ipaddress.IPv4Address, ipaddress.IPv6Address]
Interface = Union[ipaddress.IPv4Interface, ipaddress.IPv6Interface]
SCHEMA_FILE = os.path.join(os.path.dirname(__file__), "desired-state.schema.json")
_TRUE, _FALSE = ("true", "yes", "on"), ("false", "no", "off")
_LABEL = r"[A-Za-z0-9](?:[A-Za-z0-9-]{0,61}[A-Za-z0-9])?"


class Faults(list):
    def add(self, place: str, text: str) -> None:
        self.append(f"{place}: {text}" if place else text)


def load_schema() -> dict[str, Any]:
    with open(SCHEMA_FILE, encoding="utf-8") as file:
        return json.load(file)


def plain(value: Any) -> Any:
    """A value of a playbook without the types that Ansible gives it."""
    if isinstance(value, dict):
        return {str(key): plain(member) for key, member in value.items()}
    if isinstance(value, (list, tuple)):
        return [plain(item) for item in value]
    return str(value) if isinstance(value, str) else value


def conform(value: Any, schema: dict[str, Any], place: str, faults: Faults) -> Any:
    """The value as the schema has it. Numbers and truth values that a template has made texts of are taken as such."""
    if "anyOf" in schema:
        return _conform_any(value, schema["anyOf"], place, faults)
    if "const" in schema and value != schema["const"]:
        faults.add(place, f"must be {json.dumps(schema['const'])}")
    if "enum" in schema and value not in schema["enum"]:
        faults.add(place, "must be one of " + ", ".join(json.dumps(word) for word in schema["enum"]))
    kind = schema.get("type")
    return _OF_KIND[kind](value, schema, place, faults) if kind else value


def _conform_any(value: Any, forms: list[dict[str, Any]], place: str, faults: Faults) -> Any:
    attempts = []
    for form in forms:
        own = Faults()
        result = conform(value, form, place, own)
        if not own:
            return result
        attempts.append((form, own))
    # The form of the same kind tells best what is wrong.
    kinds = {dict: "object", list: "array", str: "string", int: "integer"}
    same = [own for form, own in attempts if form.get("type") == kinds.get(type(value))]
    faults.extend(same[0] if same else [f"{place}: {' or '.join(_form_text(form) for form in forms)}"])
    return value


def _form_text(form: dict[str, Any]) -> str:
    if "const" in form:
        return json.dumps(form["const"])
    return {"array": "must be a list", "object": "must be an object", "integer": "must be a whole number",
            "string": "must be a text"}[form["type"]]


def _object(value: Any, schema: dict[str, Any], place: str, faults: Faults) -> Any:
    if not isinstance(value, dict):
        faults.add(place, "must be an object")
        return value
    members = schema.get("properties", {})
    for key in schema.get("required", []):
        if key not in value:
            faults.add(place, f"lacks \"{key}\"")
    result = {}
    for key, member in value.items():
        if key in members:
            result[key] = conform(member, members[key], f"{place}/{key}", faults)
        else:
            faults.add(f"{place}/{key}", "is not a known key; these are " + ", ".join(members))
    return result


def _array(value: Any, schema: dict[str, Any], place: str, faults: Faults) -> Any:
    if not isinstance(value, list):
        faults.add(place, "must be a list")
        return value
    result = [conform(item, schema["items"], f"{place}/{i}", faults) for i, item in enumerate(value)]
    if schema.get("uniqueItems"):
        for i, item in enumerate(result):
            if item in result[:i]:
                faults.add(f"{place}/{i}", f"{json.dumps(item, ensure_ascii=False)} stands in the list twice")
    return result


def _string(value: Any, schema: dict[str, Any], place: str, faults: Faults) -> Any:
    if not isinstance(value, str):
        faults.add(place, "must be a text")
    elif schema.get("format") and not _is_address(value, schema["format"]):
        faults.add(place, f"\"{value}\" is not an {schema['format'].replace('ip', 'IP')} address")
    elif "pattern" in schema and not re.search(schema["pattern"], value):
        faults.add(place, f"\"{value}\" does not have the form that is wanted: {schema.get('description', '')}".rstrip())
    return value


def _is_address(text: str, form: str) -> bool:
    address = _address(text)
    return address is not None and f"ipv{address.version}" == form


def _integer(value: Any, schema: dict[str, Any], place: str, faults: Faults) -> Any:
    if isinstance(value, str) and re.fullmatch("[0-9]{1,9}", value):
        value = int(value)
    least, most = schema.get("minimum", 0), schema.get("maximum", 2**32 - 1)
    if isinstance(value, bool) or not isinstance(value, int) or not least <= value <= most:
        faults.add(place, f"must be a whole number from {least} to {most}")
    return value


def _boolean(value: Any, _schema: dict[str, Any], place: str, faults: Faults) -> Any:
    if isinstance(value, str) and value.lower() in _TRUE + _FALSE:
        return value.lower() in _TRUE
    if not isinstance(value, bool):
        faults.add(place, "must be true or false")
    return value


_OF_KIND = {"object": _object, "array": _array, "string": _string, "integer": _integer, "boolean": _boolean}


def _address(text: str) -> Optional[Address]:
    try:
        return ipaddress.ip_address(text)
    except ValueError:
        return None


def _interface(text: str) -> Optional[Interface]:
    try:
        return ipaddress.ip_interface(text)
    except ValueError:
        return None


def refuse_peer(address: Address) -> str:
    """Why no other host has the address; empty where one can."""
    if address.is_unspecified:
        return "is the unspecified address, not that of a host"
    if address.is_multicast:
        return "is a multicast address, not that of a host"
    if address.is_loopback:
        return "is a loopback address, which stays within a machine"
    if address.version == 4 and (address.packed[0] >= 240 or address.packed[0] == 0):
        return "is a reserved address, which no host has"
    return ""


def refuse_host(interface: Interface) -> str:
    """Why no adapter can have the address on this network; empty where one can."""
    reason = refuse_peer(interface.ip)
    network = interface.network
    bits = network.max_prefixlen
    if reason:
        return reason
    if network.prefixlen == 0:
        return f"has the prefix length 0; a network has 1 to {bits}"
    if network.prefixlen >= bits - 1:
        return ""
    if interface.ip == network.network_address:
        return ("is the address of the network itself, not of a host" if bits == 32
                else "is the address of all routers of the network, not of a host")
    if bits == 32 and interface.ip == network.broadcast_address:
        return "is the broadcast address of its network, not that of a host"
    return ""


class _AdapterRules:
    def __init__(self, adapter: dict[str, Any], place: str, faults: Faults) -> None:
        self._adapter, self._place, self._faults = adapter, place, faults

    def check(self) -> None:
        for version in (4, 6):
            self._check_ip(version, self._adapter.get(f"ipv{version}", {}), f"{self._place}/ipv{version}")
        ipv4 = self._adapter.get("ipv4", {})
        if ipv4.get("dhcp") is True and ipv4.get("addresses"):
            self._faults.add(f"{self._place}/ipv4/addresses", "cannot be given where \"dhcp\" is true")
        for i, route in enumerate(self._adapter.get("routes", [])):
            self._check_route(route, f"{self._place}/routes/{i}")
        hardware = self._adapter.get("hardwareAddress", "automatic")
        if hardware not in ("automatic", "") and int(hardware[:2], 16) & 1:
            self._faults.add(f"{self._place}/hardwareAddress",
                             "is the address of a group; the first byte of an adapter's is even")

    def _check_ip(self, version: int, ip: dict[str, Any], place: str) -> None:
        own = [self._check_host(text, version, f"{place}/addresses/{i}")
               for i, text in enumerate(ip.get("addresses", []))]
        for i, gateway in enumerate(ip.get("gateways", [])):
            text = gateway["address"] if isinstance(gateway, dict) else gateway
            self._check_neighbour(text, own if version == 4 and ip.get("addresses") else None, f"{place}/gateways/{i}")
        servers = ip.get("dnsServers", [])
        for i, text in enumerate([] if servers == "automatic" else servers):
            address = _address(text)
            if address and not address.is_loopback:
                self._refuse(f"{place}/dnsServers/{i}", text, refuse_peer(address))
        if ip.get("enabled") is False and (ip.get("addresses") or ip.get("gateways")):
            self._faults.add(place, "cannot have addresses or gateways where \"enabled\" is false")

    def _check_host(self, text: str, version: int, place: str) -> Optional[Interface]:
        interface = _interface(text)
        if interface is None or interface.version != version:
            self._faults.add(place, f"\"{text}\" is not an IPv{version} address with its prefix length")
            return None
        self._refuse(place, text, refuse_host(interface))
        return interface

    def _check_neighbour(self, text: str, own: Optional[list[Optional[Interface]]], place: str) -> None:
        """`own` are all addresses that the adapter will have, where they are known."""
        address = _address(text)
        reason = refuse_peer(address) if address else "is not an address"
        if not reason and own is not None and None not in own:
            if any(address == interface.ip for interface in own):
                reason = "is an address of the adapter itself"
            elif not any(address in interface.network for interface in own):
                reason = "is on none of the adapter's networks"
        self._refuse(place, text, reason)

    def _check_route(self, route: dict[str, Any], place: str) -> None:
        interface = _interface(route["destination"])
        if interface is None:
            reason = "is not a network with its prefix length"
        elif interface.network.prefixlen == 0:
            reason = "is a default route; give it as one of the gateways"
        elif interface.ip != interface.network.network_address:
            reason = f"is not a network; did you mean {interface.network}?"
        else:
            reason = "is no network that can be routed to" if refuse_peer(interface.ip) else ""
        self._refuse(f"{place}/destination", route["destination"], reason)
        hop = _address(route.get("nextHop", ""))
        if hop and not hop.is_unspecified:
            self._refuse(f"{place}/nextHop", str(hop), refuse_peer(hop))

    def _refuse(self, place: str, text: str, reason: str) -> None:
        if reason:
            self._faults.add(place, f"{text} {reason}")


def _duplicates(state: dict[str, Any]) -> Iterator[tuple[str, str]]:
    names: dict[str, str] = {}
    owners: dict[Address, tuple[str, str]] = {}
    for i, adapter in enumerate(state.get("adapters", [])):
        name = adapter["adapter"]
        if name.lower() in names:
            yield f"/adapters/{i}/adapter", f"\"{name}\" names an adapter that stands in the list already"
        names[name.lower()] = name
        for family in ("ipv4", "ipv6"):
            for j, text in enumerate(adapter.get(family, {}).get("addresses", [])):
                interface = _interface(text)
                if interface is None or interface.ip.is_link_local:
                    continue
                place = f"/adapters/{i}/{family}/addresses/{j}"
                owner, other = owners.setdefault(interface.ip, (name, place))
                if other != place:
                    yield place, (f"{interface.ip} stands in the list twice" if owner == name
                                  else f"{interface.ip} is an address of adapter \"{owner}\" too")


def _check_names(state: dict[str, Any], faults: Faults) -> None:
    identity = state.get("identity", {})
    name = identity.get("computerName")
    if name is not None and (not re.fullmatch(_LABEL, name) or name.isdigit()):
        faults.add("/identity/computerName",
                   "must be 1 to 63 letters, digits and hyphens, neither a number nor with a hyphen at an end")
    suffixes = [("/identity/primaryDnsSuffix", identity.get("primaryDnsSuffix"))]
    for i, adapter in enumerate(state.get("adapters", [])):
        suffixes.append((f"/adapters/{i}/ipv4/dnsSuffix", adapter.get("ipv4", {}).get("dnsSuffix")))
    for place, suffix in suffixes:
        if suffix and (len(suffix) > 255 or not re.fullmatch(rf"{_LABEL}(\.{_LABEL})*", suffix)):
            faults.add(place, "must be a DNS domain, such as \"example.org\", or empty")


def checked(document: dict[str, Any]) -> tuple[dict[str, Any], list[str]]:
    """The document to be sent, and all that is wrong with it."""
    faults = Faults()
    state = conform(plain(document), load_schema(), "", faults)
    if not faults:
        for i, adapter in enumerate(state.get("adapters", [])):
            _AdapterRules(adapter, f"/adapters/{i}", faults).check()
        for place, text in _duplicates(state):
            faults.add(place, text)
        _check_names(state, faults)
    return state, faults


def text_of(state: dict[str, Any]) -> str:
    """Always the same for the same state."""
    return json.dumps({"schemaVersion": 1, **state}, sort_keys=True, ensure_ascii=False)


def is_address(text: str) -> bool:
    return _address(text) is not None
