#!/usr/bin/python
DOCUMENTATION = r"""
---
module: zdsql_facts
short_description: Tell which ZDSQL instances a machine has
description:
  - Asks C(kalmoinstall --list --json) and sets facts. Changes nothing, and works in check mode.
options:
  folder:
    description: The folder on the machine that holds C(kalmoinstall).
    type: path
    default: /usr/lib/kalmoinstall
author:
  - the makers of ZDSQL
"""

EXAMPLES = r"""
- name: Learn which instances are there
  zdsql_facts:
- name: Show their names and ports
  ansible.builtin.debug:
    msg: "{{ zdsql_instances | map(attribute='name') | zip(zdsql_instances | map(attribute='port')) }}"
"""

RETURN = r"""
ansible_facts:
  description: What was found.
  returned: always
  type: dict
  contains:
    zdsql_instances:
      description: The instances with name, service, port, version, directory, state, kind and ours; the manager comes last.
      type: list
      elements: dict
    zdsql_version:
      description: The version of the program that was asked, which is that of its payload.
      type: str
    zdsql_init:
      description: systemd, scripts or unknown.
      type: str
"""

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.kalmoinstall import Installer, Trouble


def main():
    module = AnsibleModule(
        argument_spec={"folder": {"type": "path", "default": "/usr/lib/kalmoinstall"}}, supports_check_mode=True)
    try:
        found = Installer(module.params["folder"]).list()
    except Trouble as trouble:
        module.fail_json(msg=str(trouble), **trouble.told)
    module.exit_json(changed=False, ansible_facts={
        "zdsql_instances": found["instances"], "zdsql_version": found["version"], "zdsql_init": found["init"]})


if __name__ == "__main__":
    main()
