! The demo program: a small grade book. Each student is a derived type with an array of
! marks; a function averages the marks and a subroutine finds the best student.
module grades
  implicit none
  type student
    character(len=8) :: name
    integer :: marks(3)
    real(8) :: average
  end type student
end module grades

program demo
  use grades
  implicit none
  type(student) :: pupils(3)
  integer :: i, best
  real(8), external :: mean
  pupils(1)%name = 'Ada'
  pupils(2)%name = 'Brendan'
  pupils(3)%name = 'Cleo'
  do i = 1, 3
    pupils(i)%marks(1) = 60 + 10 * i
    pupils(i)%marks(2) = 95 - 5 * i
    pupils(i)%marks(3) = 70 + i * i
    pupils(i)%average = mean(pupils(i)%marks, 3)
  end do
  call find_best(pupils, 3, best)
  print *, 'best student: ', pupils(best)%name, pupils(best)%average
end program demo

real(8) function mean(values, n)
  integer :: n, values(n)
  integer :: k, total
  total = 0
  do k = 1, n
    total = total + values(k)
  end do
  mean = real(total, 8) / n
end function mean

subroutine find_best(pupils, n, best)
  use grades
  integer :: n, best
  type(student) :: pupils(n)
  integer :: k
  best = 1
  do k = 2, n
    if (pupils(k)%average > pupils(best)%average) best = k
  end do
end subroutine find_best
