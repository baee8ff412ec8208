! Procedure arguments between Fortran routines, functions of every result kind, RESULT
! names, recursion, arrays of rank 7 and of strings and logicals; last, a call to a
! routine that no file defines (error 29 with the routine's name).
module geometry
  type vec
    real :: x, y
  end type vec
contains
  function add(a, b) result(c)
    type(vec) :: a, b, c
    c%x = a%x + b%x
    c%y = a%y + b%y
  end function add
end module geometry

program procedures
  use geometry
  implicit none
  external twice
  real(8), external :: integrate
  real(8), external :: parabola
  complex, external :: rotate
  character(len=6), external :: label
  integer :: r7(2, 1, 2, 1, 1, 1, 2), i, j, k
  character(len=3) :: words(3)
  logical :: bits(4)
  type(vec) :: u, v
  integer(8) :: big
  i = 5
  call apply(twice, i)
  print *, 'applied', i
  print *, 'integral', integrate(parabola, 0.0d0, 3.0d0, 300)
  print *, rotate((1.0, 0.0)), label(42)
  u = vec(1.0, 2.0)
  v%x = 0.5
  v%y = 0.25
  u = add(u, v)
  print *, u%x, u%y
  do k = 1, 2
    do j = 1, 2
      do i = 1, 2
        r7(i, 1, j, 1, 1, 1, k) = i + 10 * j + 100 * k
      end do
    end do
  end do
  print *, r7
  print *, r7(2, 1, 1, 1, 1, 1, 2)
  words(1) = 'one'
  words(2) = 'two'
  words(3) = 'six'
  bits = .false.
  bits(3) = .true.
  print *, words, bits
  big = 1
  do i = 1, 20
    big = big * i
  end do
  print *, 'factorial', fact(0), fact(6), '20! =', big
  call not_linked_anywhere(big)
  print *, 'never'
contains
  recursive function fact(n) result(r)
    integer, intent(in) :: n
    integer :: r
    if (n <= 1) then
      r = 1
    else
      r = n * fact(n - 1)
    end if
  end function fact
end program procedures

subroutine apply(f, n)
  external f
  integer :: n
  call f(n)
end subroutine apply

subroutine twice(n)
  integer :: n
  n = 2 * n
end subroutine twice

real(8) function integrate(f, a, b, steps)
  real(8), external :: f
  real(8) :: a, b, h
  integer :: steps, s
  h = (b - a) / steps
  integrate = 0
  do s = 0, steps - 1
    integrate = integrate + h * f(a + (s + 0.5d0) * h)
  end do
end function integrate

real(8) function parabola(x)
  real(8) :: x
  parabola = x * x
end function parabola

complex function rotate(z)
  complex :: z
  rotate = z * (0.0, 1.0)
end function rotate

function label(n) result(text)
  integer :: n
  character(len=6) :: text
  text = 'no.'
  text(4:4) = char(ichar('0') + n / 10)
  text(5:5) = char(ichar('0') + mod(n, 10))
end function label
