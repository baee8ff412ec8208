! Stack shapes for the walk: a recursion fifty deep, a routine whose frame is larger than
! a page (allocated through the stack probe), and a small routine stopped on its first
! byte.
program stack_shapes
  implicit none
  integer :: total, v
  total = 0
  call descend(50, total) ! stop: first call
  print *, 'depth', total
  call big_frame(3) ! stop: call big frame
  v = 7
  call leaf(v) ! stop: call leaf
  print *, 'leaf', v
end program stack_shapes

recursive subroutine descend(n, total)
  implicit none
  integer :: n, total
  total = total + 1
  if (n > 1) then
    call descend(n - 1, total) ! stop: recursive call
  else
    total = total + 1000 ! stop: deepest
  end if
end subroutine descend

subroutine big_frame(k)
  implicit none
  integer :: k
  integer :: pad(3000)
  pad(1) = k ! stop: big frame first line
  pad(3000) = k * 2
  print *, 'big', pad(1) + pad(3000)
end subroutine big_frame

subroutine leaf(v) ! stop: leaf entry
  implicit none
  integer :: v
  v = v + 1
end subroutine leaf
