"""A table of your own from one of the module: copy first, all holders share the same lists."""

from copy import deepcopy

from marlune.tables.data_tables import PASEM2010

# The payload: a shallow copy is enough to take keys out or put others in.
own = dict(PASEM2010)
own["table_name"] = "PASEM2010, males plus 10 %"

# The data: a deep copy, because the lists inside are shared as well.
data = deepcopy(PASEM2010["data"])
data["qx_m"] = [min(1.0, rate * 1.1) for rate in data["qx_m"]]
own["data"] = data

if __name__ == "__main__":
    print(own["table_name"], "- q65 =", round(data["qx_m"][65], 7))
    print(PASEM2010["table_name"], "- q65 =", PASEM2010["data"]["qx_m"][65])
