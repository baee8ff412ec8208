! COMPLEX(4) and COMPLEX(8) arithmetic, mixed with integers and reals, and the
! intrinsics that take them apart.
program complex_numbers
  implicit none
  complex :: z, w
  complex(8) :: d
  complex*16 :: e
  real :: r
  z = (1.0, 2.0)
  w = (3.0, -1.0)
  print *, z + w, z - w
  print *, z * w, z / w
  print *, 2 * z, z + 1.5
  d = (0.5d0, 0.25d0)
  e = d * d + (1, 1)
  print *, e
  print *, real(e), aimag(e), conjg(z)
  r = abs((3.0, 4.0))
  print *, r
  print *, z ** 3, cmplx(2, 3)
  if (z == (1.0, 2.0)) print *, 'equal'
  if (z /= w) print *, 'different'
  d = z
  print *, d
end program complex_numbers
