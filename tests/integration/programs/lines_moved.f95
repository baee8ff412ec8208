! Loaded at run time by the lines program after its preferred base has been taken.
subroutine moved_work(n)
  integer :: n
  n = n * 2                  ! moved work
  call moved_helper(n)
end subroutine moved_work

subroutine moved_helper(n)
  integer :: n
  n = n + 1
end subroutine moved_helper
