"""Mean, standard deviation and median of data that lie on several ranks, exact for every number of them.

    mpirun -n 4 python3 mean.py
"""

from copy import deepcopy

import vexel as vx
from mpi4py import MPI

comm = MPI.COMM_WORLD
merge = MPI.Op.Create(lambda a, b, _: deepcopy(a).merge(b), commute=True)

# Each rank has every size-th block of one long random array.
blocks = [vx.Normal(3, 2).sample(65536, vx.Random(1, block=b)) for b in range(comm.rank, 16, comm.size)]

moments = vx.Moments(2)
for x in blocks:
    moments.update(x)
moments = comm.allreduce(moments, op=merge)

ranks = vx.Ranks([0.5])
while not ranks.done:
    for x in blocks:
        ranks.update(x)
    # All ranks go on from the merged state of the pass.
    ranks = comm.allreduce(ranks, op=merge).next_pass()

if comm.rank == 0:
    print(f"mean {moments.mean.hex()} sd {moments.std.hex()} median {float(ranks.result[0]).hex()}")
