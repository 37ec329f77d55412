#!/usr/bin/python
# The documentation of the action plugin of the same name, which does the work on the controller.
from __future__ import annotations

DOCUMENTATION = r"""
module: state
short_description: Take the network configuration of a Windows machine to a desired state
version_added: 1.0.0
description:
  - Changes addresses, gateways, DNS servers, routes, names and other settings of adapters so that they are as given.
    Whatever is not mentioned is left alone. A list means exactly its elements.
  - The keys are those of the documents that C(zelkctl apply) reads. C(zelkctl export) prints the present state of a machine in
    that form.
  - The state is checked on the controller before a connection is opened. If a step fails, what was done is undone.
extends_documentation_fragment: velmor.zelk.target
options:
  adapters:
    description: The adapters, each named once.
    type: list
    elements: dict
    suboptions:
      adapter:
        description: Name of the connection, index, hardware address or GUID, as on the command line of C(zelkctl).
        type: str
        required: true
      enabled:
        description: Whether the device is started.
        type: bool
      connectionName:
        description: New name of the connection.
        type: str
      hardwareAddress:
        description: What the driver is told to use, such as C(02-00-5E-10-00-0A), or C(automatic) for its own.
        type: str
      mtu:
        description: Largest packet of both families, in bytes, from 1280 to 65535.
        type: int
      ipv4:
        description: Settings of IPv4.
        type: dict
        suboptions:
          addresses:
            description: Exactly these static addresses with their prefix lengths, such as C(192.0.2.20/24). They end DHCP.
            type: list
            elements: str
          gateways:
            description: Exactly these static default gateways. Each is an address, or has the keys C(address) and C(metric).
            type: list
            elements: raw
          dnsServers:
            description: Exactly these servers in this order, or C(automatic).
            type: raw
          metric:
            description: Metric of the interface from 1 to 9999, or C(automatic).
            type: raw
          mtu:
            description: Largest packet, in bytes, from 576 to 65535.
            type: int
          dhcp:
            description: Whether the adapter is a DHCP client. It is none when it has C(addresses).
            type: bool
          dnsSuffix:
            description: DNS suffix of the connection; empty for none.
            type: str
          netbios:
            description: NetBIOS over TCP/IP, or as the DHCP server says.
            type: str
            choices: [dhcp, enabled, disabled]
      ipv6:
        description: Settings of IPv6. Link-local addresses and those that a router has given remain.
        type: dict
        suboptions:
          addresses:
            description: Exactly these static addresses with their prefix lengths.
            type: list
            elements: str
          gateways:
            description: Exactly these static default gateways. Each is an address, or has the keys C(address) and C(metric).
            type: list
            elements: raw
          dnsServers:
            description: Exactly these servers in this order, or C(automatic).
            type: raw
          metric:
            description: Metric of the interface from 1 to 9999, or C(automatic).
            type: raw
          mtu:
            description: Largest packet, in bytes, from 1280 to 65535.
            type: int
          enabled:
            description: Whether IPv6 is bound to the adapter.
            type: bool
      routes:
        description: Exactly these static routes of both families, apart from default routes, which are C(gateways).
        type: list
        elements: dict
        suboptions:
          destination:
            description: A network, such as C(10.0.0.0/8).
            type: str
            required: true
          nextHop:
            description: Address of the router. Leave it out for a destination on the link.
            type: str
          metric:
            description: Metric of the route from 1 to 9999; left alone when it is not given.
            type: int
          store:
            description: Whether the route outlasts the next start. New routes do unless this is C(active).
            type: str
            choices: [active, persistent]
  identity:
    description: Names of the machine.
    type: dict
    suboptions:
      computerName:
        description: DNS host name from the next start on.
        type: str
      primaryDnsSuffix:
        description: DNS domain from the next start on; empty for none.
        type: str
      workgroup:
        description: Workgroup.
        type: str
  confirm_within:
    description:
      - Restores the previous state unless the controller confirms the change over a new connection within this number of
        seconds, which begin when the change is done.
      - The controller connects at the address of I(reconnect_to) if it is given, otherwise at the present one.
      - The machine does this by itself. If the change cuts it off, it restores its previous state, and the task fails
        and says so.
      - It takes up to 10 seconds over SSH, and up to 20 over WinRM and PSRP, until a broken connection is noticed. Give at
        least 60 seconds.
    type: int
  wait_for:
    description: Address of a host that also confirms the change as soon as it answers an echo request of the machine.
    type: str
  timeout:
    description: How long each command of the change, and verifying it, may take, in seconds.
    type: int
    default: 60
  keep:
    description: Does not undo what was done if a step fails.
    type: bool
    default: false
notes:
  - If the connection breaks during the change, the module connects again and asks the machine what has become of it. A change
    that it cannot confirm is restored by the machine.
  - A task that was interrupted before it could confirm its change is continued by the next run with the same state, which
    confirms the change. While a change of somebody else waits to be confirmed, nothing is changed; the task fails and names who
    has made it and when.
  - The change is made while nobody else changes the machine. Check mode needs no elevation.
author: Velmor (@velmor)
attributes:
  check_mode:
    description: Can run in check mode and predict the changes.
    support: full
  diff_mode:
    description: Shows each item before and after.
    support: full
"""

EXAMPLES = r"""
- name: Give an adapter a static address
  velmor.zelk.state:
    adapters:
      - adapter: lan0
        ipv4:
          addresses: [192.0.2.20/24]
          gateways: [192.0.2.1]
          dnsServers: [192.0.2.53, 192.0.2.55]

- name: Move a machine to another network, and let it return by itself if it cannot be reached there
  velmor.zelk.state:
    adapters:
      - adapter: lan0
        ipv4:
          addresses: [198.51.100.20/24]
          gateways: [198.51.100.1]
    confirm_within: 120
    reconnect_to: 198.51.100.20

- name: Return to DHCP and remove all static routes
  velmor.zelk.state:
    adapters:
      - adapter: lan1
        ipv4:
          dhcp: true
          dnsServers: automatic
        routes: []

- name: Apply a state that "zelkctl export" has printed
  velmor.zelk.state:
    adapters: "{{ (lookup('ansible.builtin.file', 'lan0.json') | from_json).adapters }}"
"""

RETURN = r"""
apply:
  description: What was done, as C(zelkctl apply --json) tells it.
  returned: when the state was applied
  type: dict
  contains:
    outcome:
      description: How it ended, such as C(unchanged) or C(changed).
      type: str
    items:
      description: What differed, each with C(adapter), C(path), C(before) and C(after).
      type: list
      elements: dict
    steps:
      description: The steps with their outcomes and durations.
      type: list
      elements: dict
difference:
  description: What differs and what would be done, as C(zelkctl apply --check --json) tells it.
  returned: in check mode, and after a broken connection
  type: dict
notes:
  description: What has to be known beside that, such as names that take effect at the next start.
  returned: success
  type: list
  elements: str
"""
