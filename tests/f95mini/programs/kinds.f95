! Integer, real, logical and complex kinds, literal kind suffixes, conversions, mixed
! arithmetic and intrinsics (the elementary functions too).
program kinds
  implicit none
  integer(1) :: i1
  integer(2) :: i2
  integer*4 :: i4
  integer(kind=8) :: i8
  real(4) :: r4
  real*8 :: r8
  double precision :: dp
  logical(1) :: l1
  logical(2) :: l2
  logical :: l4
  logical*8 :: l8
  integer, parameter :: big = 2147483647
  complex*8 :: z, w
  complex(8) :: d
  complex*16 :: e
  i1 = 127
  i1 = i1 + 1_1
  i2 = -32768
  i4 = big
  i8 = int(big, 8) + 1_8
  print *, i1, i2, i4, i8
  r4 = 1.0 / 3.0
  r8 = 1.0d0 / 3.0d0
  dp = 2.0_8 ** 0.5_8
  print *, r4, r8, dp
  print *, int(2.7), nint(2.5), nint(-2.5), int(-2.7), real(7) / 2
  print *, mod(17, 5), mod(-17, 5), mod(7.5, 2.0), abs(-3), abs(-2.5d0)
  print *, min(3, 1, 2), max(1.5, 2), sign(3, -1), sign(2.0, 1.0)
  print *, sqrt(16.0), dble(1.5), 10 ** 3, 2.0 ** (-2), 2 ** 10
  l1 = .true.
  l4 = .not. l1
  l8 = l1 .and. .not. l4
  l2 = l8
  print *, l1, l2, l4, l8, l1 .eqv. l4, l1 .neqv. l4
  print *, 7 / 2, -7 / 2, 7.0 / 2
  print *, 1.5e10, 1.0e-5, 123456789.0_8, -0.0
  print *, exp(0.0), log(1.0d0), sin(0.0), cos(0.0), tan(0.0), atan(1.0d0) * 4, float(3), kind(1_8)
  print *, achar(72), iachar('A')
  z = (1.0, 2.0)
  w = (3.0, -1.0)
  print *, z + w, z - w, z * w, z / w
  print *, 2 * z, z + 1.5, z ** 3, cmplx(2, 3)
  d = (0.5d0, 0.25d0)
  e = d * d + (1, 1)
  print *, e, real(e), aimag(e), conjg(z), abs((3.0, 4.0))
  if (z == (1.0, 2.0) .and. z /= w) print *, 'equal and different'
  d = z
  print *, d
end program kinds
