! The demo program: three bodies orbit a fixed sun for a few steps of a simple
! integrator. It has a module type with array components, an array of them, a COMMON
! block, a recursive function and nested calls, so the debugger has something of each
! kind to show.
module bodies
  implicit none
  type body
    character(len=8) :: name
    real(8) :: mass
    real(8) :: position(2)
    real(8) :: velocity(2)
  end type body
  real(8), parameter :: gravity = 1.0d0
end module bodies

program planets
  use bodies
  implicit none
  type(body) :: system(3)
  integer :: step, steps
  real(8) :: energy
  integer :: calls
  common /counters/ calls
  integer :: depth
  integer, external :: triangle

  calls = 0
  steps = 4
  call place(system(1), 'Mercury ', 0.1d0, 0.4d0)
  call place(system(2), 'Venus   ', 0.8d0, 0.7d0)
  call place(system(3), 'Earth   ', 1.0d0, 1.0d0)
  do step = 1, steps
    call advance(system, 3, 0.05d0)
    energy = total_energy(system, 3)
    print *, 'step', step, 'energy', energy
  end do
  depth = triangle(5)
  print *, 'triangle', depth, 'calls', calls

contains

  real(8) function total_energy(all, n)
    integer :: n
    type(body) :: all(n)
    integer :: k
    total_energy = 0.0d0
    do k = 1, n
      total_energy = total_energy + 0.5d0 * all(k)%mass * &
        (all(k)%velocity(1)**2 + all(k)%velocity(2)**2)
    end do
  end function total_energy

end program planets

subroutine place(b, name, mass, radius)
  use bodies
  implicit none
  type(body) :: b
  character(len=8) :: name
  real(8) :: mass, radius
  b%name = name
  b%mass = mass
  b%position(1) = radius
  b%position(2) = 0.0d0
  b%velocity(1) = 0.0d0
  b%velocity(2) = sqrt(gravity / radius)
end subroutine place

subroutine advance(all, n, dt)
  use bodies
  implicit none
  integer :: n
  type(body) :: all(n)
  real(8) :: dt
  integer :: k
  real(8) :: r, pull
  integer :: calls
  common /counters/ calls
  calls = calls + 1
  do k = 1, n
    r = sqrt(all(k)%position(1)**2 + all(k)%position(2)**2)
    pull = gravity / (r * r * r)
    all(k)%velocity(1) = all(k)%velocity(1) - dt * pull * all(k)%position(1)
    all(k)%velocity(2) = all(k)%velocity(2) - dt * pull * all(k)%position(2)
    all(k)%position(1) = all(k)%position(1) + dt * all(k)%velocity(1)
    all(k)%position(2) = all(k)%position(2) + dt * all(k)%velocity(2)
  end do
end subroutine advance

recursive integer function triangle(n) result(t)
  implicit none
  integer :: n
  if (n <= 1) then
    t = 1
  else
    t = n + triangle(n - 1)
  end if
end function triangle
